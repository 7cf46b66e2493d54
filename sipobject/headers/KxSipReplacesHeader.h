#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxSharedParameters.h"

/** Replaces: identifies the dialog that the new dialog replaces.
    Replaces = "Replaces" HCOLON callid *(SEMI replaces-param)                [RFC 3891 6.1]
    The whole line is one value, including commas. Throws "SIP Replaces header must contain a callid", "... a to-tag"
    and "... a from-tag", in this order.      "Replaces: a@h;to-tag=1;from-tag=2;early-only" -> the same */
class KX_SIP_API KxSipReplacesHeader final : public KxSipHeaderOf<KxSipReplacesHeader> {
public:
    KxSipReplacesHeader(const KxString& callId, const KxString& fromTag, const KxString& toTag);
    template <class A, class B, class C>
    requires(KxSipHasStdText<A, B, C>) KxSipReplacesHeader(const A& callId, const B& fromTag, const C& toTag)
        : KxSipReplacesHeader(KxSipAnyText(callId).needed("Call-ID"), KxSipAnyText(fromTag).needed(sFromTag),
                              KxSipAnyText(toTag).needed(sToTag)) {}

    KxString getCallID() const { return m_callId; }
    void setCallID(const KxString& callId) { m_callId = callId; }
    void setCallID(KxSipStdText callId) { setCallID(callId.needed("Call-ID")); }
    KxString getFromTag() const { return m_parameters.getValue(sFromTag); }
    void setFromTag(const KxString& tag) { setParameter(sFromTag, tag); }
    void setFromTag(KxSipStdText tag) { setFromTag(tag.needed(sFromTag)); }
    KxString getToTag() const { return m_parameters.getValue(sToTag); }
    void setToTag(const KxString& tag) { setParameter(sToTag, tag); }
    void setToTag(KxSipStdText tag) { setToTag(tag.needed(sToTag)); }
    /** Whether the dialog may be replaced only before it is confirmed. [RFC 3891 6.1] */
    [[nodiscard]] bool isEarlyOnly() const { return isParameterPresent(sEarlyOnly); }
    void setEarlyOnly(bool isEarlyOnly) {
        if (isEarlyOnly) {
            setParameter(sEarlyOnly, KxString(""));
        } else {
            m_parameters.removeValue(sEarlyOnly);
        }
    }
    /** Nil when absent. */
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    [[nodiscard]] bool isParameterPresent(std::string_view name) const { return m_parameters.isPresent(name); }
    void setParameter(std::string_view name, const KxString& value) { m_parameters.write().setValue(name, value); }
    void setParameter(std::string_view name, KxSipStdText value) {
        setParameter(KxSipText(name).checked().view(), value.line());
    }

    static constexpr const char* sToTag = "to-tag";
    static constexpr const char* sFromTag = "from-tag";
    static constexpr const char* sEarlyOnly = "early-only";
    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipReplacesHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kReplaces;

private:
    friend class KxSipHeaderOf<KxSipReplacesHeader>;

    KxSipReplacesHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxSharedParameters m_parameters;
    KxString m_callId;
};
