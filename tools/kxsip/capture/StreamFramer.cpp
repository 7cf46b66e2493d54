#include "tools/kxsip/capture/StreamFramer.h"

#include "tools/kxsip/HeaderScan.h"
#include "tools/kxsip/StartLine.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr std::size_t kLongestMessage = 1U << 20;
constexpr std::size_t kLongestStartLine = 8192;

/** Returns the length of the body by the header section's Content-Length, 0 if there is none that can be read. */
std::size_t contentLength(std::string_view headers) {
    const std::string_view text = HeaderScan::valueOf(headers, "Content-Length", 'l').value_or("0");
    std::size_t length = 0;
    std::from_chars(text.data(), text.data() + text.size(), length);
    return std::min(length, kLongestMessage);
}

} // namespace

void StreamFramer::feed(std::string_view bytes) {
    m_bytes.erase(0, m_begin);
    m_begin = 0;
    m_bytes += bytes;
}

std::optional<std::string> StreamFramer::next() {
    if (!m_inMessage && !findMessage()) {
        return std::nullopt;
    }
    if (m_length == 0 && !findHeaderEnd()) {
        return unread().size() > kLongestMessage ? cutOff() : std::nullopt;
    }
    if (unread().size() < m_length) {
        return m_length > kLongestMessage ? cutOff() : std::nullopt;
    }
    std::string message(unread().substr(0, m_length));
    drop(m_length);
    return message;
}

std::optional<std::string> StreamFramer::cutOff() {
    std::optional<std::string> message;
    if (m_inMessage) {
        message = unread();
    }
    drop(unread().size());
    return message;
}

void StreamFramer::drop(std::size_t count) {
    m_begin += count;
    m_scanned = 0;
    m_line = 0;
    m_length = 0;
    m_inMessage = false;
    m_midLine = false;
}

/** Drops the lines before one that looks like a start line. Returns whether there is one. */
bool StreamFramer::findMessage() {
    while (true) {
        const std::string_view bytes = unread();
        const std::size_t end = bytes.find('\n', m_scanned);
        if (end == std::string_view::npos) {
            m_scanned = bytes.size();
            if (bytes.size() > kLongestStartLine) {
                drop(bytes.size());
                m_midLine = true;
            }
            return false;
        }
        if (!m_midLine && looksLikeStartLine(bytes.substr(0, end + 1))) {
            m_inMessage = true;
            m_scanned = m_line = end + 1;
            return true;
        }
        drop(end + 1);
    }
}

/** Finds the empty line and sets the length of the message. Returns whether the empty line is there. */
bool StreamFramer::findHeaderEnd() {
    const std::string_view bytes = unread();
    while (true) {
        const std::size_t end = bytes.find('\n', m_scanned);
        if (end == std::string_view::npos) {
            m_scanned = bytes.size();
            return false;
        }
        const std::string_view line = bytes.substr(m_line, end - m_line);
        m_scanned = m_line = end + 1;
        if (line.empty() || line == "\r") {
            m_length = m_line + contentLength(bytes.substr(0, m_line));
            return true;
        }
    }
}
