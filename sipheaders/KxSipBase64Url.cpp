#include "sipheaders/KxSipBase64Url.h"

#include "util/KxAscii.h"

#include <cstdint>

namespace {

/** The six bits of a character; -1 if it has none. */
int sixBitsOf(char c) {
    if (KxAscii::isAlpha(c)) {
        return c >= 'a' ? c - 'a' + 26 : c - 'A';
    }
    return KxAscii::isDigit(c) ? c - '0' + 52 : c == '-' || c == '+' ? 62 : c == '_' || c == '/' ? 63 : -1;
}

} // namespace

std::string KxSipBase64Url::sEncode(std::string_view bytes) {
    static constexpr char kCharacters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char byte : bytes) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
        for (count += 8; count >= 6; count -= 6) {
            text += kCharacters[bits >> (count - 6) & 63];
        }
    }
    if (count != 0) {
        text += kCharacters[bits << (6 - count) & 63];
    }
    return text;
}

std::optional<std::string> KxSipBase64Url::sDecode(std::string_view text) {
    if (text.size() % 4 == 0) {
        text.remove_suffix(text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0);
    }
    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        const int six = sixBitsOf(c);
        if (six < 0) {
            return std::nullopt;
        }
        bits = bits << 6 | static_cast<std::uint32_t>(six);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 255);
        }
    }
    return text.size() % 4 == 1 ? std::nullopt : std::optional(std::move(bytes));
}
