#include "util/KxAscii.h"

#include "util/KxBytes.h"

#include <algorithm>
#include <limits>

namespace KxAscii {

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    if (KxBytes::equal(a.data(), b.data(), a.size())) {
        return true;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i] && toLower(a[i]) != toLower(b[i])) {
            return false;
        }
    }
    return true;
}

int compareNoCase(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        const int difference = static_cast<unsigned char>(toLower(a[i])) - static_cast<unsigned char>(toLower(b[i]));
        if (difference != 0) {
            return difference;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

std::int64_t toNumber(std::string_view text) {
    constexpr std::size_t kSafeDigits = 9; // a number of so many digits always fits into 32 bits
    std::uint32_t plain = 0;
    std::size_t digits = 0;
    while (digits < text.size() && digits <= kSafeDigits && isDigit(text[digits])) {
        plain = plain * 10 + static_cast<std::uint32_t>(text[digits++] - '0');
    }
    if (digits != 0 && digits <= kSafeDigits) {
        return plain;
    }
    std::size_t at = 0;
    while (at < text.size() && isSpace(text[at])) {
        ++at;
    }
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        ++at;
    }
    const std::int64_t limit = negative ? -std::int64_t{std::numeric_limits<std::int32_t>::min()}
                                        : std::int64_t{std::numeric_limits<std::uint32_t>::max()};
    std::int64_t value = 0;
    for (; at < text.size() && isDigit(text[at]); ++at) {
        value = std::min(value * 10 + (text[at] - '0'), limit);
    }
    return negative ? -value : value;
}

} // namespace KxAscii
