#include "tools/kxsip/StartLine.h"

#include "util/KxCharSet.h"

#include <algorithm>

namespace {

constexpr KxCharSet kTokenMarks("-.!%*_+`'~"); // RFC 3261 25.1

bool isNumber(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), KxAscii::isDigit);
}

bool isToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return KxAscii::isAlpha(c) || KxAscii::isDigit(c) || kTokenMarks.contains(c);
    });
}

/** Whether the text is "SIP/2.0", with any numbers. */
bool isVersion(std::string_view text) {
    constexpr std::string_view kProtocol = "SIP/";
    if (!text.starts_with(kProtocol)) {
        return false;
    }
    text.remove_prefix(kProtocol.size());
    const std::size_t point = text.find('.');
    return point != std::string_view::npos && isNumber(text.substr(0, point)) && isNumber(text.substr(point + 1));
}

} // namespace

bool looksLikeStartLine(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    const std::size_t first = line.find(' ');
    if (first == std::string_view::npos || first + 1 == line.size()) {
        return false;
    }
    const std::string_view token = line.substr(0, first);
    const std::string_view rest = line.substr(first + 1);
    if (isVersion(token)) {
        return KxAscii::isDigit(rest.front());
    }
    const std::size_t last = rest.rfind(' ');
    const bool isHeader = rest.front() == ':'; // "Subject : about SIP/2.0"
    return last != std::string_view::npos && !isHeader && isToken(token) && isVersion(rest.substr(last + 1));
}
