#include "tools/kxsip/TimeBound.h"

#include "tools/kxsip/Printable.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

constexpr microseconds kDay = std::chrono::hours(24);

/** Reads the text at its beginning by the format of strptime, and takes what was read off. */
bool take(std::string_view& text, const char* format, std::tm& parts) {
    const std::string copy(text);
    const char* const end = strptime(copy.c_str(), format, &parts);
    if (end == nullptr) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - copy.c_str()));
    return true;
}

/** Takes ".123" off; returns the number of digits, and adds the fraction to the time. */
std::optional<std::size_t> takeFraction(std::string_view& text, microseconds& time) {
    if (!text.starts_with('.')) {
        return 0;
    }
    text.remove_prefix(1);
    std::size_t digits = 0;
    microseconds unit = seconds(1);
    for (; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        unit /= 10;
        time += unit * (text[digits] - '0');
    }
    text.remove_prefix(digits);
    return digits == 0 || digits > 6 ? std::nullopt : std::optional(digits);
}

/** Returns the last moment of a second that was written with so many digits after the point. */
microseconds lastOf(microseconds time, std::size_t digits) {
    microseconds unit = seconds(1);
    for (; digits > 0; --digits) {
        unit /= 10;
    }
    return time + unit - microseconds(1);
}

/** Returns the time of the date; nothing for a date that no month has. */
std::optional<microseconds> dateOf(std::tm parts) {
    std::tm normal = parts;
    const std::time_t time = timegm(&normal);
    const bool isDate = normal.tm_mday == parts.tm_mday && parts.tm_year >= 70;
    return isDate ? std::optional<microseconds>(seconds(time)) : std::nullopt;
}

} // namespace

std::optional<TimeBound> TimeBound::sRead(const std::string& text) {
    std::string_view rest = text;
    std::tm date{};
    TimeBound bound;
    bound.isTimeOfDay = text.size() < 10 || text[4] != '-';
    if (!bound.isTimeOfDay) {
        const std::optional<microseconds> day = take(rest, "%Y-%m-%d", date) ? dateOf(date) : std::nullopt;
        if (!day || rest.empty()) {
            return day ? std::optional(TimeBound{*day, *day + kDay - microseconds(1), false}) : std::nullopt;
        }
        if (rest.front() != 'T' && rest.front() != ' ') {
            return std::nullopt;
        }
        rest.remove_prefix(1);
        bound.first = *day;
    }
    std::tm clock{};
    if (!take(rest, "%H:%M:%S", clock) || clock.tm_sec > 59) {
        return std::nullopt;
    }
    bound.first += std::chrono::hours(clock.tm_hour) + std::chrono::minutes(clock.tm_min) + seconds(clock.tm_sec);
    const std::optional<std::size_t> digits = takeFraction(rest, bound.first);
    std::tm zone{};
    if (!digits || (!rest.empty() && (bound.isTimeOfDay || !take(rest, "%z", zone))) || !rest.empty()) {
        return std::nullopt;
    }
    bound.first -= seconds(zone.tm_gmtoff);
    bound.last = lastOf(bound.first, *digits);
    return bound;
}

std::string TimeBound::sFault(const std::string& text) {
    return sRead(text)
               ? ""
               : "\"" + printable(text) +
                     "\" is no time; write 2026-11-21, 2026-11-21T13:22:21Z, 2026-11-21T14:22:21+01:00 or 13:22:21";
}

bool TimeBound::sIsBetween(Time time, const std::optional<TimeBound>& since, const std::optional<TimeBound>& until) {
    const auto sideOf = [time](const TimeBound& bound) { return bound.isTimeOfDay ? time % kDay : time; };
    const bool isAfter = !since || sideOf(*since) >= since->first;
    const bool isBefore = !until || sideOf(*until) <= until->last;
    const bool isOverMidnight =
        since && until && since->isTimeOfDay && until->isTimeOfDay && since->first > until->last;
    return isOverMidnight ? isAfter || isBefore : isAfter && isBefore;
}
