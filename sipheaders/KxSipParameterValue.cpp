#include "sipheaders/KxSipParameterValue.h"

#include "sipobject/KxSipLine.h"
#include "util/KxAscii.h"
#include "util/KxCharSet.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace {

/** What is no part of a token. [RFC 3261 25.1] */
bool isNoTokenChar(char c) {
    return !KxAscii::isAlpha(c) && !KxAscii::isDigit(c) &&
           std::string_view("-.!%*_+`'~").find(c) == std::string_view::npos;
}

} // namespace

KxString KxSipParameterValue::sText(const KxString& value) {
    const std::string_view text = value.view();
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
        return value;
    }
    std::string plain;
    for (std::size_t at = 1; at < text.size() - 1; ++at) {
        at += text[at] == '\\' && at + 2 < text.size() ? 1 : 0;
        plain += text[at];
    }
    return KxString(plain);
}

KxString KxSipParameterValue::sQuoted(KxSipText text) {
    std::string quoted = "\"";
    for (const char c : text.checked().view()) {
        quoted.append(c == '"' || c == '\\' ? 1 : 0, '\\').append(1, c);
    }
    return KxString(quoted.append(1, '"'));
}

KxString KxSipParameterValue::sTokenOrQuoted(KxSipText text) {
    return sIsToken(text.view()) ? text.line() : sQuoted(text);
}

bool KxSipParameterValue::sIsToken(std::string_view text) {
    return !text.empty() && std::none_of(text.begin(), text.end(), isNoTokenChar);
}

std::string_view KxSipParameterValue::sTake(KxSipLine& line) {
    static constexpr KxCharSet kEnd{" \t\r\n,;\"<>"};
    line.skipSpace();
    if (line.peek() != '"') {
        return line.until(kEnd);
    }
    const std::string_view text = line.window();
    std::size_t end = text.find_first_of("\"\\\r\n", 1);
    while (end < text.size() && text[end] == '\\') {
        end = text.find_first_of("\"\\\r\n", end + 2);
    }
    if (end >= text.size() || text[end] != '"') {
        return {};
    }
    line.consume(end + 1);
    return text.substr(0, end + 1);
}

std::optional<std::uint32_t> KxSipParameterValue::sNumber(const KxString& value) {
    const KxString text = sText(value);
    const char* const end = text.c_str() + text.length();
    std::uint32_t number = 0;
    const auto [stop, error] = std::from_chars(text.c_str(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

KxString KxSipParameterValue::sOfNumber(std::uint32_t number) {
    return KxString(std::to_string(number));
}
