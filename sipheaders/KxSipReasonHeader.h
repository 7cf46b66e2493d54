#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** Reason: why the request was sent, such as the cause of a hang-up. One object per reason; a message has at most one
    of a protocol, except of SIP [RFC 8606].
    Reason = "Reason" HCOLON reason-value *(COMMA reason-value)               [RFC 3326 2]
    reason-value = protocol *(SEMI ( protocol-cause / reason-text / generic-param ))
    "Reason: Q.850 ;cause=16 ;text=\"Terminated\"" -> the same */
class KX_HEADERS_API KxSipReasonHeader final : public KxSipFieldHeader<KxSipReasonHeader> {
public:
    /** @param protocol such as "SIP" or "Q.850". Throws KxSipParseError if it is no token. */
    explicit KxSipReasonHeader(KxSipText protocol) : KxSipFieldHeader(protocol) {}
    KxSipReasonHeader(KxSipText protocol, std::uint32_t cause) : KxSipReasonHeader(protocol) { setCause(cause); }

    /** "SIP", "Q.850" or another, in any letter case. */
    const KxString& getProtocol() const { return m_value; }
    void setProtocol(KxSipText protocol) { setTokenText(protocol); }
    [[nodiscard]] bool isProtocol(std::string_view name) const { return m_value.equalsNoCase(name); }
    /** A status code for SIP, a cause value for Q.850; none if it is absent or no number. */
    std::optional<std::uint32_t> getCause() const { return KxSipParameterValue::sNumber(getParameter("cause")); }
    void setCause(std::uint32_t cause) { setParameter("cause", KxSipParameterValue::sOfNumber(cause)); }
    /** Without quotes and escapes; nil when absent. */
    KxString getText() const { return KxSipParameterValue::sText(getParameter("text")); }
    void setText(KxSipText text) { setParameter("text", KxSipParameterValue::sQuoted(text)); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipReasonHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid Reason header";

private:
    friend class KxSipHeaderOf<KxSipReasonHeader>;

    KxSipReasonHeader() = default;
};
