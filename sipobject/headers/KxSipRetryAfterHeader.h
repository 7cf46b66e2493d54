#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"
#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTextKeepingHeader.h"

#include <optional>

/** Retry-After: the number of seconds after which the service or the callee should be available again.
    Retry-After = "Retry-After" HCOLON delta-seconds [ comment ] *( SEMI retry-param )   [RFC 3261 20.33]
    A value that does not begin with a digit, such as a date, is kept as text, including commas. Comments may be nested
    and may contain commas; an unclosed comment is dropped; in the RFC grammar
    the value is then kept as text.
    "Retry-After: 120(in (or near) a meeting);duration=60" -> "Retry-After: 120 (in (or near) a meeting);duration=60" */
class KX_SIP_API KxSipRetryAfterHeader final
    : public KxSipNumberHeader<
          KxSipRetryAfterHeader,
          KxSipParameterHeader<KxSipRetryAfterHeader, KxSipTextKeepingHeader<KxSipRetryAfterHeader>>> {
public:
    explicit KxSipRetryAfterHeader(std::uint32_t seconds, const KxString& comment = KxString())
        : KxSipNumberHeader(seconds), m_comment(comment) {}
    KxSipRetryAfterHeader(std::uint32_t seconds, KxSipStdText comment)
        : KxSipRetryAfterHeader(seconds, comment.line()) {}

    std::uint32_t getDeltaSeconds() const { return m_number; }
    /** Replaces a value that was kept as text. */
    void setDeltaSeconds(std::uint32_t seconds) {
        m_number = seconds;
        forgetText();
    }
    /** The text between the outer parentheses, including escapes; empty when there is no comment. */
    const KxString& getComment() const { return m_comment; }
    /** Stored as given, unchecked. */
    void setComment(const KxString& comment) { m_comment = comment; }
    void setComment(KxSipStdText comment) { setComment(comment.line()); }
    /** The number of seconds for which the callee will be available, as text; nil when absent. */
    KxString getDuration() const { return getParameter("duration"); }
    void setDuration(const KxString& seconds) { setParameter("duration", seconds); }
    void setDuration(KxSipStdText seconds) { setDuration(seconds.line()); }
    /** The same as a number, at most 4294967295; none when absent or not a number. */
    [[nodiscard]] std::optional<std::uint32_t> getDurationInSeconds() const {
        return KxSipNumberText::sSeconds(getDuration());
    }
    void setDurationInSeconds(std::uint32_t seconds) { setDuration(KxSipNumberText::sText(seconds)); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRetryAfterHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kRetryAfter;
    static constexpr const char* kNoDigitError = "Invalid Retry-After header";

private:
    friend class KxSipHeaderOf<KxSipRetryAfterHeader>;
    friend class KxSipTextKeepingHeader<KxSipRetryAfterHeader>;

    KxSipRetryAfterHeader() = default;
    void forgetValue();
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;
    bool parseComment(KxSipLine& line);

    KxString m_comment;
};
