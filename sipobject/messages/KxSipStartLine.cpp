#include "sipobject/messages/KxSipStartLine.h"

#include "util/KxCharSet.h"

#include <algorithm>

namespace {

constexpr std::string_view kProtocol = "SIP/";
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
    if (!text.starts_with(kProtocol)) {
        return false;
    }
    text.remove_prefix(kProtocol.size());
    const std::size_t point = text.find('.');
    return point != std::string_view::npos && isNumber(text.substr(0, point)) && isNumber(text.substr(point + 1));
}

/** The text after the first blank, without white space around it. */
std::string_view afterBlank(std::string_view text) {
    const std::size_t blank = text.find(' ');
    return blank == std::string_view::npos ? std::string_view() : KxAscii::trim(text.substr(blank));
}

} // namespace

KxSipStartLine KxSipStartLine::sRead(std::string_view bytes) {
    const std::string_view line = KxAscii::trim(bytes.substr(0, bytes.find('\n')));
    KxSipStartLine start;
    start.isResponse = KxAscii::equalsNoCase(line.substr(0, kProtocol.size()), kProtocol);
    if (start.isResponse) {
        const std::string_view status = afterBlank(line);
        const std::string_view code = status.substr(0, status.find(' '));
        start.code = code.size() == 3 && isNumber(code) ? static_cast<unsigned>(KxAscii::toNumber(code)) : 0;
        start.reason = afterBlank(status);
    } else {
        start.method = line.substr(0, line.find(' '));
    }
    return start;
}

bool KxSipStartLine::sIsLikely(std::string_view line) {
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

std::size_t KxSipStartLine::sFind(std::string_view bytes, std::size_t position) {
    while (position < bytes.size()) {
        const std::size_t next = std::min(bytes.find('\n', position), bytes.size() - 1) + 1;
        if (sIsLikely(bytes.substr(position, next - position))) {
            break;
        }
        position = next;
    }
    return position;
}
