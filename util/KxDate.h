#pragma once

#include "util/KxString.h"
#include "util/UtilApi.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>

class KxOutputStream;

/** A date of the years 1 to 9999, to the second, or none. Times are GMT, years are those of the Gregorian calendar. A
    date text that could not be read is kept and written unchanged. A small value; an object is to be used by one thread
    at a time. */
class KX_UTIL_API KxDate {
public:
    /** No date. */
    KxDate() = default;
    /** As constructKxDate. */
    explicit KxDate(std::string_view text) { constructKxDate(text); }
    explicit KxDate(const char* text) { constructKxDate(text); }

    /** Reads a date text. Returns true if it is a date; otherwise the date is none and keeps the text. Three forms are
        known. Names may be in either letter case, in full or short:
            Thu, 01 Dec 1994 16:00:00 GMT       RFC 1123, the form that is written
            Thursday, 01-Dec-94 16:00:00 GMT    RFC 850
            Thu Dec  1 16:00:00 1994            asctime
        The weekday (which is not compared with the date), the time, the seconds and the zone may be missing. The zone
        is GMT, UTC, UT or Z. Years of two digits are 1950 to 1999 for 50 to 99, and 2000 to 2049 below (RFC 2822
        section 4.3). A leap second is read as the first second of the next minute. */
    bool constructKxDate(std::string_view text);
    /** As above; null reads as empty. */
    bool constructKxDate(const char* text) {
        return constructKxDate(text == nullptr ? std::string_view() : std::string_view(text));
    }

    /** The date so many seconds after 1970-01-01 00:00:00. If the year is out of bounds, the nearest possible date. */
    static KxDate sFromSeconds(std::int64_t secondsSinceEpoch);
    static KxDate sNow();

    /** Writes the date as of RFC 1123 (29 characters), or the text that could not be read, and a NUL. Returns the
        number of characters. If the text does not fit or there is none, returns 0 and writes an empty text where size
        allows it. */
    std::size_t getKxDate(char* buffer, std::size_t size) const;
    /** Writes the same to a stream, in any length. */
    void getKxDate(KxOutputStream& out) const;

    bool isValid() const { return m_seconds != kNone; }
    /** Seconds since 1970-01-01 00:00:00; 0 for none. */
    std::int64_t getSeconds() const { return isValid() ? m_seconds : 0; }
    /** Seconds from now to the date, negative when it has passed; 0 for none. */
    std::int64_t getDelta() const;

    /** Orders by time. Objects without a date sort before all dates and are ordered by their text. */
    friend std::strong_ordering operator<=>(const KxDate& a, const KxDate& b) {
        const auto byTime = a.m_seconds <=> b.m_seconds;
        return byTime != 0 ? byTime : a.m_unread.compareWith(b.m_unread) <=> 0;
    }
    friend bool operator==(const KxDate& a, const KxDate& b) { return (a <=> b) == 0; }

private:
    static constexpr std::int64_t kNone = INT64_MIN;
    static constexpr std::size_t kRoom = 80; ///< For a date as text, with any values that its integers could have.

    /** The date as text, which is written to `date`; or the text that could not be read. */
    std::string_view view(char (&date)[kRoom]) const;

    std::int64_t m_seconds = kNone;
    KxString m_unread;
};
