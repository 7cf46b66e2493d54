#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>
#include <cstdint>

#include <clocale>
#include <cwchar>

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

std::uint32_t codeOf(std::string_view character) {
    const auto first = static_cast<unsigned char>(character.front());
    std::uint32_t code = character.size() == 1 ? first : first & (0xFFU >> (character.size() + 1));
    for (const char c : character.substr(1)) {
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    }
    return code;
}

/** Returns the length of the first character if it may be shown, else 0. */
std::size_t shownLength(std::string_view text) {
    const std::size_t length = text.starts_with("\r\n") ? 0 : Utf8::characterLength(text);
    return Utf8::changesDirection(text.substr(0, length)) ? 0 : length;
}

/** While an object of this class exists, wcwidth knows the characters of Unicode. Nothing else changes. */
class CharacterTypes {
public:
    CharacterTypes() : m_before(uselocale(sUnicode())) {}
    ~CharacterTypes() { uselocale(m_before); }
    CharacterTypes(const CharacterTypes&) = delete;
    CharacterTypes& operator=(const CharacterTypes&) = delete;

private:
    static locale_t sUnicode() {
        static const locale_t s_unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
        return s_unicode; // null, which changes nothing, if the system does not have it
    }

    locale_t m_before;
};

/** Removes the first character of a text that is not empty. Returns the columns that it takes. */
std::size_t takeWidth(std::string_view& text) {
    const std::size_t length = std::max<std::size_t>(Utf8::characterLength(text), 1);
    const std::string_view character = text.substr(0, length);
    text.remove_prefix(length);
    const bool isPlain = length == 1;
    const int width = isPlain ? 1 : wcwidth(static_cast<wchar_t>(codeOf(character)));
    return width < 0 ? 1 : static_cast<std::size_t>(width);
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
    const std::uint32_t code = codeOf(text.substr(0, length));
    const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool isForbidden =
        code < 0xA0 || (code >= 0xD800 && code < 0xE000) || (code & 0xFFFEU) == 0xFFFE || code > 0x10FFFF;
    return isOverlong || isForbidden ? 0 : length;
}

bool Utf8::changesDirection(std::string_view character) {
    return character == "\u200E" || character == "\u200F" || character == "\u061C" ||
           (character >= "\u202A" && character <= "\u202E") || (character >= "\u2066" && character <= "\u2069");
}

std::size_t Utf8::width(std::string_view text) {
    const CharacterTypes types;
    std::size_t result = 0;
    while (!text.empty()) {
        result += takeWidth(text);
    }
    return result;
}

std::string Utf8::shortened(std::string_view text, std::size_t most, std::string_view ellipsis) {
    if (width(text) <= most) {
        return std::string(text);
    }
    const CharacterTypes types;
    const std::size_t room = most - std::min(most, width(ellipsis));
    std::string_view rest = text;
    std::size_t end = 0;
    for (std::size_t taken = takeWidth(rest); taken <= room; taken += takeWidth(rest)) {
        end = text.size() - rest.size();
    }
    return std::string(text.substr(0, end)).append(ellipsis);
}

std::string Utf8::escaped(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    while (!text.empty()) {
        const std::size_t length = shownLength(text);
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
