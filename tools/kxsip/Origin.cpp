#include "tools/kxsip/Origin.h"

#include <array>
#include <cstdio>
#include <ctime>

std::string utcText(std::chrono::microseconds time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t whole = seconds.count();
    std::tm parts{};
    gmtime_r(&whole, &parts);
    std::array<char, 32> date{};
    const std::size_t length = std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%06dZ", static_cast<int>((time - seconds).count()));
    return std::string(date.data(), length) + fraction.data();
}
