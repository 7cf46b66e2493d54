#pragma once

#include "sipobject/headers/KxSipTextKeepingHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** Priority: how urgent the request is for its recipient.
    Priority = "Priority" HCOLON priority-value                               [RFC 3261 20.26]
    Any token is accepted; a value that does not begin with a token is kept as text.
    "Priority: non-urgent" -> the same */
class KX_SIP_API KxSipPriorityHeader final
    : public KxSipTokenHeader<KxSipPriorityHeader, KxSipTextKeepingHeader<KxSipPriorityHeader>> {
public:
    explicit KxSipPriorityHeader(const char* priority) : KxSipTokenHeader(priority) {}
    explicit KxSipPriorityHeader(KxSipText priority) : KxSipTokenHeader(priority) {}

    /** "emergency", "urgent", "normal", "non-urgent" or another; empty if the value was kept as text. */
    const KxString& getPriority() const { return m_value; }
    /** Replaces a value that was kept as text, too. */
    void setPriority(KxSipText priority) { setTokenText(priority); }
    /** Whether the priority is this one. Letter case is ignored. */
    [[nodiscard]] bool isPriority(KxSipText priority) const { return isTokenText(priority); }
    [[nodiscard]] bool isEmergency() const { return isPriority("emergency"); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPriorityHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kPriority;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Invalid Priority header";

private:
    friend class KxSipHeaderOf<KxSipPriorityHeader>;
    friend class KxSipTextKeepingHeader<KxSipPriorityHeader>;

    KxSipPriorityHeader() = default;
    void forgetValue() { m_value = KxString(); }
};
