#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>
#include <cstdint>

namespace {

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::string_view entityOf(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return {};
    }
}

} // namespace

std::size_t Utf8::characterLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length < 2 || text.size() < length ||
        !std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length), isContinuation)) {
        return length == 1 && first != 0x7F && (first >= 0x20 || first == '\t' || first == '\n') ? 1 : 0;
    }
    std::uint32_t code = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool isForbidden =
        code < 0xA0 || (code >= 0xD800 && code < 0xE000) || (code & 0xFFFEU) == 0xFFFE || code > 0x10FFFF;
    return isOverlong || isForbidden ? 0 : length;
}

std::size_t Utf8::length(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuation));
}

std::string Utf8::shortened(std::string_view text, std::size_t most) {
    if (length(text) <= most) {
        return std::string(text);
    }
    std::size_t end = 0;
    for (std::size_t seen = 0; end < text.size(); ++end) {
        seen += isContinuation(text[end]) ? 0 : 1;
        if (seen == std::max<std::size_t>(most, 1)) {
            break;
        }
    }
    return std::string(text.substr(0, end)) + "\u2026";
}

std::string Utf8::escaped(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    while (!text.empty()) {
        const std::size_t length = text.starts_with("\r\n") ? 0 : characterLength(text);
        const auto byte = static_cast<unsigned char>(text.front());
        if (const std::string_view entity = entityOf(text.front()); !entity.empty()) {
            result += entity;
        } else if (length > 0) {
            result += text.substr(0, length);
        } else if (!text.starts_with("\r\n")) {
            result += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}
