#include "tools/kxsip/flow/TimeText.h"

#include <array>
#include <cstdio>
#include <ctime>

/** A time, which is since 1970, as calendar and clock show it. */
class TimeText::Parts {
public:
    Parts(std::chrono::microseconds time, TimeMode mode) {
        const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
        const std::time_t whole = seconds.count();
        mode == TimeMode::Local ? localtime_r(&whole, &m_parts) : gmtime_r(&whole, &m_parts);
        m_day = std::chrono::floor<std::chrono::days>(seconds + std::chrono::seconds(m_parts.tm_gmtoff));
        m_milliseconds = static_cast<int>(std::chrono::floor<std::chrono::milliseconds>(time - seconds).count());
    }

    std::string date() const { return formatted("%Y-%m-%d"); }
    std::string clock() const {
        std::array<char, 16> fraction{};
        std::snprintf(fraction.data(), fraction.size(), ".%03d", m_milliseconds);
        return formatted("%H:%M:%S") + fraction.data();
    }
    /** Returns "+0100". */
    std::string offset() const { return formatted("%z"); }
    std::chrono::days day() const { return m_day; }

private:
    std::string formatted(const char* format) const {
        std::array<char, 32> text{};
        return {text.data(), std::strftime(text.data(), text.size(), format, &m_parts)};
    }

    std::tm m_parts{};
    std::chrono::days m_day{};
    int m_milliseconds = 0;
};

std::string TimeText::of(const Step& step, const Call& call) const {
    if (isElapsed()) {
        return secondsText(step.origin.time - call.begin());
    }
    const Parts parts(step.origin.time, m_mode);
    const auto later = (parts.day() - Parts(call.begin(), m_mode).day()).count();
    return (later > 0 ? "+" + std::to_string(later) + "d " : "") + parts.clock();
}

std::string TimeText::date(std::chrono::microseconds time) const {
    const Parts parts(time, m_mode);
    return parts.date() + " " + parts.clock() + " " + (m_mode == TimeMode::Local ? parts.offset() : "UTC");
}
