#include "MessageCutter.h"

#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxException.h"

#include <algorithm>
#include <stdexcept>

namespace {

/** Returns the value of the first Content-Length, 0 if there is none. A stream transport requires one. */
std::size_t bodyLength(std::string_view head) {
    KxByteArrayInputStream in(head.substr(head.find('\n') + 1));
    while (in.available() != 0) {
        try {
            const auto header = KxHandleCast<KxSipContentLengthHeader>(KxSipHeader::sConstructFrom(in));
            if (!header.isNil()) {
                return header->getContentLength();
            }
        } catch (const KxHandle<KxException>&) { // a refused line is skipped; the stream is after it
        }
    }
    return 0;
}

} // namespace

std::optional<std::string> MessageCutter::next() {
    if (m_scanned == 0) {
        m_bytes.erase(0, std::min(m_bytes.find_first_not_of("\r\n"), m_bytes.size()));
    }
    if (m_length == 0 && findBody()) {
        m_length = m_scanned + bodyLength(std::string_view(m_bytes).substr(0, m_scanned));
    }
    if (std::max(m_length, m_scanned) > kLargest) {
        throw std::length_error("too large a message");
    }
    if (m_length == 0 || m_bytes.size() < m_length) {
        return {};
    }
    std::string message = m_bytes.substr(0, m_length);
    m_bytes.erase(0, m_length);
    m_scanned = m_length = 0;
    m_isLineEmpty = false;
    return message;
}

/** Whether the empty line was found; m_scanned is then the position after it. */
bool MessageCutter::findBody() {
    while (m_scanned < m_bytes.size()) {
        const char c = m_bytes[m_scanned++];
        if (c == '\n' && m_isLineEmpty) {
            return true;
        }
        m_isLineEmpty = c == '\n' || (c == '\r' && m_isLineEmpty);
    }
    return false;
}
