#pragma once

#include "sipobject/headers/KxSipDecimal.h"
#include "sipobject/headers/KxSipHeaderOf.h"

#include <cstdint>
#include <optional>

/** Timestamp: when the request was sent, by the sender's clock, and the delay before it was answered.
    Timestamp = "Timestamp" HCOLON 1*(DIGIT) [ "." *(DIGIT) ] [ LWS delay ]   [RFC 3261 20.38]
    delay = *(DIGIT) [ "." *(DIGIT) ]
    Both are in seconds and are kept as text, since a response repeats them digit for digit. A value that does not begin
    with a digit throws "Invalid Timestamp header".      "Timestamp: 54.10  0.500" -> "Timestamp: 54.10 0.500" */
class KX_SIP_API KxSipTimestampHeader final : public KxSipHeaderOf<KxSipTimestampHeader> {
public:
    explicit KxSipTimestampHeader(const KxString& timestamp, const KxString& delay = KxString())
        : m_timestamp(timestamp), m_delay(delay) {}
    template <class A, class B = KxString>
    requires(KxSipHasStdText<A, B>) explicit KxSipTimestampHeader(const A& timestamp, const B& delay = B())
        : KxSipTimestampHeader(KxSipAnyText(timestamp).needed("Timestamp"), KxSipAnyText(delay).line()) {}

    /** A header with this time, without a delay. */
    static KxHandle<KxSipTimestampHeader> sOfMicroseconds(std::uint64_t timestamp) {
        return KxMake<KxSipTimestampHeader>(KxSipDecimal::sWrite(timestamp, kPlaces));
    }

    const KxString& getTimestamp() const { return m_timestamp; }
    /** Throws KxSipParseError if the text is empty or contains CR, LF or NUL. */
    void setTimestamp(KxSipText timestamp) { m_timestamp = timestamp.needed("Timestamp"); }
    /** The time in microseconds, without the digits after the sixth decimal place, at most 2^64 - 1. None if the text
        is not a decimal number, which only an application can set. */
    [[nodiscard]] std::optional<std::uint64_t> getTimestampInMicroseconds() const {
        return KxSipDecimal::sRead(m_timestamp, kPlaces);
    }
    void setTimestampInMicroseconds(std::uint64_t timestamp) { m_timestamp = KxSipDecimal::sWrite(timestamp, kPlaces); }
    /** Empty when absent. */
    const KxString& getDelay() const { return m_delay; }
    /** Stored as given, unchecked; an empty text removes the delay. */
    void setDelay(const KxString& delay) { m_delay = delay; }
    void setDelay(KxSipStdText delay) { setDelay(delay.line()); }
    /** As getTimestampInMicroseconds; none also when the delay is absent or has no digit. */
    [[nodiscard]] std::optional<std::uint64_t> getDelayInMicroseconds() const {
        return KxSipDecimal::sRead(m_delay, kPlaces);
    }
    void setDelayInMicroseconds(std::uint64_t delay) { m_delay = KxSipDecimal::sWrite(delay, kPlaces); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipTimestampHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kTimestamp;

private:
    friend class KxSipHeaderOf<KxSipTimestampHeader>;

    static constexpr unsigned kPlaces = 6; // of microseconds

    KxSipTimestampHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxString m_timestamp;
    KxString m_delay;
};
