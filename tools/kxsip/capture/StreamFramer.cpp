#include "tools/kxsip/capture/StreamFramer.h"

#include "sipobject/messages/KxSipStartLine.h"

namespace {

constexpr std::size_t kLongestStartLine = 8192;

} // namespace

void StreamFramer::feed(std::string_view bytes) {
    m_bytes.erase(0, m_begin);
    m_begin = 0;
    m_bytes += bytes;
}

std::optional<StreamFramer::Message> StreamFramer::next() {
    if (!m_inMessage && !findMessage()) {
        return std::nullopt;
    }
    const KxSipFramer::Frame frame = m_framer.next(unread());
    m_begin += frame.consumed;
    m_position += frame.consumed;
    if (frame.kind == KxSipFramer::Kind::Incomplete) {
        return std::nullopt;
    }
    m_inMessage = false;
    Message message{std::string(frame.bytes), m_messageBegin, m_position};
    m_framer.reset(); // after an error, too: the next start line is searched
    return message;
}

std::optional<StreamFramer::Message> StreamFramer::cutOff() {
    std::optional<Message> message;
    if (m_inMessage) {
        message =
            Message{std::string(m_framer.pending()).append(unread()), m_messageBegin, m_position + unread().size()};
    }
    m_framer.reset();
    drop(unread().size());
    m_inMessage = false;
    m_midLine = false;
    return message;
}

void StreamFramer::drop(std::size_t count) {
    m_begin += count;
    m_position += count;
    m_scanned = 0;
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
        m_scanned = 0;
        if (!m_midLine && KxSipStartLine::sIsLikely(bytes.substr(0, end + 1))) {
            m_inMessage = true;
            m_messageBegin = m_position;
            return true;
        }
        m_midLine = false;
        drop(end + 1);
    }
}
