#pragma once

#include "util/KxString.h"
#include "util/UtilApi.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>

class KxOutputStream;

/** A date of the years 1 to 9999 in seconds, or none. Times are GMT, years are those of the Gregorian calendar. A date
    text that could not be read is kept and written as it stood. A small value; one object is used by one thread at a
    time. */
class KX_UTIL_API KxDate {
public:
    /** None. */
    KxDate() = default;
    /** As constructKxDate. */
    explicit KxDate(std::string_view text) { constructKxDate(text); }
    explicit KxDate(const char* text) { constructKxDate(text); }

    /** Reads a date text; true if it was one, else the date is none and keeps the text. Three forms are known, names
        in either letter case and in full or short:
            Thu, 01 Dec 1994 16:00:00 GMT       RFC 1123, the form to write
            Thursday, 01-Dec-94 16:00:00 GMT    RFC 850
            Thu Dec  1 16:00:00 1994            asctime
        Weekday (which is not compared with the date), time, seconds and zone may be missing; the zone is GMT, UTC, UT
        or Z. Of the years of two digits, 50 to 99 are 1950 to 1999 (RFC 2822 section 4.3). A leap second is the
        next minute's first. */
    bool constructKxDate(std::string_view text);
    /** As above; null reads as empty. */
    bool constructKxDate(const char* text) {
        return constructKxDate(text == nullptr ? std::string_view() : std::string_view(text));
    }

    /** The date so many seconds after 1970-01-01 00:00:00; the nearest there is when the year is out of bounds. */
    static KxDate sFromSeconds(std::int64_t secondsSinceEpoch);
    static KxDate sNow();

    /** Writes the date as of RFC 1123 (29 characters), or the text that could not be read, and a NUL. Returns the
        number of characters; 0, and an empty text where size allows, when it does not fit or there is nothing. */
    std::size_t getKxDate(char* buffer, std::size_t size) const;
    /** Writes the same to a stream, whatever its length. */
    void getKxDate(KxOutputStream& out) const;

    bool isValid() const { return m_seconds != kNone; }
    /** Since 1970-01-01 00:00:00; 0 for none. */
    std::int64_t getSeconds() const { return isValid() ? m_seconds : 0; }
    /** Seconds from now to the date, negative when it has passed; 0 for none. */
    std::int64_t getDelta() const;

    /** By time; none sorts before all dates, and among themselves those sort by their text. */
    friend std::strong_ordering operator<=>(const KxDate& a, const KxDate& b) {
        const auto byTime = a.m_seconds <=> b.m_seconds;
        return byTime != 0 ? byTime : a.m_unread.compareWith(b.m_unread) <=> 0;
    }
    friend bool operator==(const KxDate& a, const KxDate& b) { return (a <=> b) == 0; }

private:
    static constexpr std::int64_t kNone = INT64_MIN;
    static constexpr std::size_t kLength = 29;

    /** Writes kLength characters. */
    void write(char* to) const;

    std::int64_t m_seconds = kNone;
    KxString m_unread;
};
