#pragma once

#include "util/UtilApi.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/** Characters as SIP uses them: bytes, ASCII, independent of the locale. */
namespace KxAscii {

constexpr bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr char toLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
constexpr char toUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}
constexpr bool isAlpha(char c) {
    return toLower(c) >= 'a' && toLower(c) <= 'z';
}

/** Whether the texts are equal when the case of ASCII letters is ignored. */
KX_UTIL_API bool equalsNoCase(std::string_view a, std::string_view b);
/** Returns a negative number, zero or a positive number; letters compare as if they were lower case. */
KX_UTIL_API int compareNoCase(std::string_view a, std::string_view b);

constexpr std::string_view trimEnd(std::string_view text) {
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}
constexpr std::string_view trim(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    return trimEnd(text);
}

/** The first character of [begin, end) that is not white space, or `end`. */
constexpr const char* skipSpace(const char* begin, const char* end) {
    while (begin != end && isSpace(*begin)) {
        ++begin;
    }
    return begin;
}

/** `atoi` for text of a given length: leading white space, a sign, digits; 0 when there are no digits. The result is
    limited to the range from the least signed to the greatest unsigned 32-bit number, so that it may be converted to
    either. */
KX_UTIL_API std::int64_t toNumber(std::string_view text);

} // namespace KxAscii
