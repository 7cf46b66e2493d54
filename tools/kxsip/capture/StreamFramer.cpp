#include "tools/kxsip/capture/StreamFramer.h"

#include "sipobject/messages/KxSipStartLine.h"

#include <algorithm>

namespace {

constexpr std::size_t kLongestStartLine = 8192;
constexpr std::size_t kLongestRefused = 65536;

} // namespace

void StreamFramer::feed(std::string_view bytes) {
    m_bytes.erase(0, m_begin);
    m_begin = 0;
    m_bytes += bytes;
}

std::optional<StreamFramer::Message> StreamFramer::next() {
    if (!m_inMessage) {
        const Search search = findMessage();
        if (search.refused > 0) {
            return takeHere(search.refused);
        }
        if (!search.isFound) {
            return std::nullopt;
        }
    }
    const KxSipFramer::Frame frame = m_framer.next(unread());
    m_begin += frame.consumed;
    m_position += frame.consumed;
    if (frame.kind == KxSipFramer::Kind::Incomplete) {
        return std::nullopt;
    }
    m_inMessage = false;
    m_isLost = frame.kind == KxSipFramer::Kind::Error;
    Message message{std::string(frame.bytes), m_messageBegin, m_position};
    m_framer.reset(); // after an error, too: the next start line is searched
    return message;
}

std::optional<StreamFramer::Message> StreamFramer::cutOff() {
    std::optional<Message> message;
    if (m_inMessage) {
        message =
            Message{std::string(m_framer.pending()).append(unread()), m_messageBegin, m_position + unread().size()};
    } else if (keepsLines()) {
        dropFiller();
        if (!unread().empty()) {
            message = takeHere(unread().size());
        }
    }
    m_framer.reset();
    drop(unread().size());
    m_inMessage = false;
    m_midLine = false;
    m_isLost = true;
    return message;
}

StreamFramer::Message StreamFramer::takeHere(std::size_t count) {
    Message message{std::string(unread().substr(0, count)), m_position, m_position + count};
    drop(count);
    return message;
}

void StreamFramer::drop(std::size_t count) {
    m_begin += count;
    m_position += count;
    m_line = 0;
    m_scanned = 0;
}

/** Drops the line ends and NULs before a message. */
void StreamFramer::dropFiller() {
    if (m_line == 0 && !m_midLine) {
        drop(std::min(unread().find_first_not_of(std::string_view("\r\n\0", 3)), unread().size()));
    }
}

/** Passes over the lines before one that looks like a start line. Drops them, or else returns them in one piece. */
StreamFramer::Search StreamFramer::findMessage() {
    while (true) {
        if (keepsLines()) {
            dropFiller();
        }
        const std::string_view bytes = unread();
        const std::size_t end = bytes.find('\n', std::max(m_scanned, m_line));
        if (end == std::string_view::npos) {
            m_scanned = bytes.size();
            return {false, loseLongLine()};
        }
        const std::string_view line = bytes.substr(m_line, end + 1 - m_line);
        if (!m_midLine && KxSipStartLine::sIsLikely(line)) {
            m_inMessage = m_line == 0;
            m_messageBegin = m_position;
            return {m_inMessage, m_line};
        }
        m_midLine = false;
        const bool isEmpty = line.find_first_not_of("\r\n") == std::string_view::npos;
        if (!keepsLines()) {
            m_isLost = m_isLost || !isEmpty;
            drop(end + 1);
        } else if (isEmpty) { // the end of a header section
            m_inMessage = true;
            m_messageBegin = m_position;
            return {true, 0};
        } else {
            m_line = end + 1;
        }
    }
}

/** Gives up the bytes here if no start line can be expected in them. Returns how many are to be returned. */
std::size_t StreamFramer::loseLongLine() {
    const std::size_t size = unread().size();
    const bool keeps = keepsLines();
    if (size - m_line <= kLongestStartLine && size <= kLongestRefused) {
        return 0;
    }
    m_isLost = true;
    m_midLine = m_line < size;
    if (!keeps) {
        drop(size);
    }
    return keeps ? size : 0;
}
