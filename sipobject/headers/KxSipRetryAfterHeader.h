#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"
#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTextKeepingHeader.h"

/** Retry-After: after how many seconds the service, or the callee, should be there again.
    Retry-After = "Retry-After" HCOLON delta-seconds [ comment ] *( SEMI retry-param )   [RFC 3261 20.33]
    What does not begin with a digit, such as a date, is kept as text, commas included. Comments may be nested and hold
    commas; one that is never closed is not kept.
    "Retry-After: 120(in (or near) a meeting);duration=60" -> "Retry-After: 120 (in (or near) a meeting);duration=60" */
class KX_SIP_API KxSipRetryAfterHeader final
    : public KxSipNumberHeader<
          KxSipRetryAfterHeader,
          KxSipParameterHeader<KxSipRetryAfterHeader, KxSipTextKeepingHeader<KxSipRetryAfterHeader>>> {
public:
    explicit KxSipRetryAfterHeader(std::uint32_t seconds, const KxString& comment = KxString())
        : KxSipNumberHeader(seconds), m_comment(comment) {}

    std::uint32_t getDeltaSeconds() const { return m_number; }
    /** Takes the place of a text that was kept. */
    void setDeltaSeconds(std::uint32_t seconds) {
        m_number = seconds;
        forgetText();
    }
    /** What stands between the outer parentheses, escapes included; empty when there is none. */
    const KxString& getComment() const { return m_comment; }
    /** Stored as given, unchecked. */
    void setComment(const KxString& comment) { m_comment = comment; }
    /** For how many seconds the callee will be there, as written; nil when absent. */
    KxString getDuration() const { return getParameter("duration"); }
    void setDuration(const KxString& seconds) { setParameter("duration", seconds); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRetryAfterHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kRetryAfter;
    static constexpr const char* kNoDigitError = "Invalid Retry-After header";

private:
    friend class KxSipHeaderOf<KxSipRetryAfterHeader>;
    friend class KxSipTextKeepingHeader<KxSipRetryAfterHeader>;

    KxSipRetryAfterHeader() = default;
    void forgetValue();
    KxSipFault parseValue(KxInputStream& in);
    void serializeValue(KxOutputStream& out) const;
    void parseComment(KxInputStream& in);

    KxString m_comment;
};
