#include "util/KxDate.h"

#include "util/KxOutputStream.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>

namespace {

namespace chrono = std::chrono;

constexpr std::string_view kWeekdays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::string_view kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                                        "July",    "August",   "September", "October", "November", "December"};
constexpr std::string_view kZones[] = {"GMT", "UTC", "UT", "Z"};

constexpr std::int64_t secondsOf(int year, unsigned month, unsigned day) {
    const chrono::sys_days days = chrono::year(year) / static_cast<int>(month) / static_cast<int>(day);
    return chrono::seconds(days.time_since_epoch()).count();
}
constexpr std::int64_t kFirst = secondsOf(1, 1, 1);
constexpr std::int64_t kLast = secondsOf(9999, 12, 31) + 86399;

/** Parses a date text. */
class DateReader {
public:
    explicit DateReader(std::string_view text) : m_rest(text) {}

    /** Sets the seconds since the epoch. Returns false if the text is not a date. */
    bool read(std::int64_t& seconds) {
        readName(kWeekdays);
        if (!readDayAndMonth()) {
            return false;
        }
        const bool timeIsFirst = atTime(); // as in the asctime form
        if (timeIsFirst && !readTime()) {
            return false;
        }
        if (!readYear() || (!timeIsFirst && atDigit() && !readTime()) || !readZone() || !atEnd()) {
            return false;
        }
        if (!chrono::year_month_day(chrono::year(m_year), chrono::month(m_month), chrono::day(m_day)).ok()) {
            return false;
        }
        seconds = secondsOf(m_year, m_month, m_day) + m_secondOfDay;
        return true;
    }

private:
    void skipBlanks() {
        while (!m_rest.empty() && (m_rest.front() == ' ' || m_rest.front() == '\t' || m_rest.front() == ',')) {
            m_rest.remove_prefix(1);
        }
    }
    bool skip(char c) {
        const bool isThere = m_rest.starts_with(c);
        m_rest.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    bool atEnd() {
        skipBlanks();
        return m_rest.empty();
    }
    bool atDigit() {
        skipBlanks();
        return !m_rest.empty() && KxAscii::isDigit(m_rest.front());
    }
    bool atTime() {
        skipBlanks();
        const std::size_t digits = countOf(KxAscii::isDigit);
        return digits < m_rest.size() && m_rest[digits] == ':';
    }

    /** How many of the next characters are of the kind. */
    template <class IsOfKind>
    std::size_t countOf(IsOfKind isOfKind) const {
        std::size_t count = 0;
        while (count < m_rest.size() && isOfKind(m_rest[count])) {
            ++count;
        }
        return count;
    }
    /** The next letters, which stay unread. */
    std::string_view word() {
        skipBlanks();
        return m_rest.substr(0, countOf(KxAscii::isAlpha));
    }
    /** Reads the next digits, at most four; returns their number, or 0 if there are more. */
    std::size_t readNumber(unsigned& number) {
        const std::size_t count = countOf(KxAscii::isDigit);
        if (count > 4) {
            return 0;
        }
        number = 0;
        for (const char digit : m_rest.substr(0, count)) {
            number = number * 10 + static_cast<unsigned>(digit - '0');
        }
        m_rest.remove_prefix(count);
        return count;
    }
    /** Reads one or two digits, a number up to `highest`. */
    bool readField(unsigned& number, unsigned highest) {
        const std::size_t digits = readNumber(number);
        return digits != 0 && digits <= 2 && number <= highest;
    }

    /** Reads a name of the table, in full or shortened to three letters or more; returns its index, or the size of the
        table if there is none. */
    template <std::size_t N>
    std::size_t readName(const std::string_view (&names)[N]) {
        const std::string_view found = word();
        const auto at = std::find_if(std::begin(names), std::end(names), [&](std::string_view name) {
            return found.size() >= std::min<std::size_t>(3, name.size()) &&
                   KxAscii::toUpper(found.front()) == name.front() &&
                   KxAscii::equalsNoCase(found, name.substr(0, found.size()));
        });
        if (at != std::end(names)) {
            m_rest.remove_prefix(found.size());
        }
        return static_cast<std::size_t>(at - std::begin(names));
    }

    bool readDayAndMonth() {
        if (!atDigit()) {
            return readMonth() && readDay();
        }
        if (!readDay()) {
            return false;
        }
        skip('-');
        if (!readMonth()) {
            return false;
        }
        skip('-');
        return true;
    }
    bool readMonth() {
        m_month = static_cast<unsigned>(readName(kMonths)) + 1;
        return m_month <= std::size(kMonths);
    }
    bool readDay() {
        skipBlanks();
        return readField(m_day, 31);
    }
    bool readYear() {
        skipBlanks();
        unsigned year = 0;
        const std::size_t digits = readNumber(year);
        if (digits == 2) {
            year += year < 50 ? 2000 : 1900;
        }
        m_year = static_cast<int>(year);
        return (digits == 2 || digits == 4) && year != 0;
    }
    bool readTime() {
        unsigned hour = 0;
        unsigned minute = 0;
        unsigned second = 0;
        if (!readField(hour, 23) || !skip(':') || !readField(minute, 59) || (skip(':') && !readField(second, 60))) {
            return false;
        }
        m_secondOfDay = hour * 3600 + minute * 60 + second;
        return true;
    }
    bool readZone() { return word().empty() || readName(kZones) != std::size(kZones); }

    std::string_view m_rest;
    unsigned m_day = 0;
    unsigned m_month = 0;
    int m_year = 0;
    std::int64_t m_secondOfDay = 0;
};

} // namespace

bool KxDate::constructKxDate(std::string_view text) {
    std::int64_t seconds = 0;
    if (DateReader(text).read(seconds)) {
        *this = sFromSeconds(seconds);
        return true;
    }
    m_seconds = kNone;
    m_unread = KxString(text);
    return false;
}

KxDate KxDate::sFromSeconds(std::int64_t secondsSinceEpoch) {
    KxDate date;
    date.m_seconds = std::clamp(secondsSinceEpoch, kFirst, kLast);
    return date;
}

KxDate KxDate::sNow() {
    return sFromSeconds(chrono::floor<chrono::seconds>(chrono::system_clock::now()).time_since_epoch().count());
}

std::int64_t KxDate::getDelta() const {
    return isValid() ? m_seconds - sNow().m_seconds : 0;
}

std::string_view KxDate::view(char (&date)[kRoom]) const {
    if (!isValid()) {
        return m_unread.view();
    }
    const chrono::sys_seconds time{chrono::seconds(m_seconds)};
    const chrono::sys_days days = chrono::floor<chrono::days>(time);
    const chrono::year_month_day ymd(days);
    const chrono::hh_mm_ss clock(time - days);
    const int length =
        std::snprintf(date, sizeof date, "%.3s, %02u %.3s %04d %02d:%02d:%02d GMT",
                      kWeekdays[chrono::weekday(days).c_encoding()].data(), static_cast<unsigned>(ymd.day()),
                      kMonths[static_cast<unsigned>(ymd.month()) - 1].data(), static_cast<int>(ymd.year()),
                      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                      static_cast<int>(clock.seconds().count()));
    return {date, static_cast<std::size_t>(length)};
}

std::size_t KxDate::getKxDate(char* buffer, std::size_t size) const {
    char date[kRoom];
    const std::string_view text = view(date);
    const std::size_t length = text.size() < size ? text.copy(buffer, size) : 0;
    if (size != 0) {
        buffer[length] = '\0';
    }
    return length;
}

void KxDate::getKxDate(KxOutputStream& out) const {
    char date[kRoom];
    out << view(date);
}
