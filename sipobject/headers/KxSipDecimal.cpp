#include "sipobject/headers/KxSipDecimal.h"

#include "util/KxAscii.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace {

/** Appends a digit to the number, or makes it the largest one. */
void append(std::uint64_t& number, unsigned digit) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    number = number > (kMost - digit) / 10 ? kMost : number * 10 + digit;
}

} // namespace

std::optional<std::uint64_t> KxSipDecimal::sRead(std::string_view text, unsigned places) {
    const std::string_view whole = text.substr(0, text.find('.'));
    const std::string_view fraction = text.substr(std::min(whole.size() + 1, text.size()));
    const auto isNumber = [](std::string_view digits) {
        return std::all_of(digits.begin(), digits.end(), KxAscii::isDigit);
    };
    if ((whole.empty() && fraction.empty()) || !isNumber(whole) || !isNumber(fraction)) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    for (const char c : whole) {
        append(number, static_cast<unsigned>(c - '0'));
    }
    for (unsigned place = 0; place < places; ++place) {
        append(number, place < fraction.size() ? static_cast<unsigned>(fraction[place] - '0') : 0);
    }
    return number;
}

KxString KxSipDecimal::sWrite(std::uint64_t number, unsigned places) {
    std::uint64_t unit = 1;
    for (unsigned place = 0; place < places; ++place) {
        unit *= 10;
    }
    char text[32];
    char* end = std::to_chars(text, text + sizeof text, number / unit).ptr;
    std::uint64_t fraction = number % unit;
    if (fraction != 0) {
        *end++ = '.';
    }
    for (; fraction != 0; fraction %= unit) {
        fraction *= 10;
        *end++ = static_cast<char>('0' + fraction / unit);
    }
    return KxString(std::string_view(text, static_cast<std::size_t>(end - text)));
}
