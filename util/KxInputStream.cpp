#include "util/KxInputStream.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kFirstBuffer = 1024;

/** The length of the first logical line of the text, including its LF; `npos` when the text ends before this is
    known. */
std::size_t logicalLineLength(std::string_view text) {
    std::size_t at = 0;
    while ((at = text.find('\n', at)) != std::string_view::npos) {
        ++at;
        if (at == text.size()) {
            return std::string_view::npos; // a continuation line may follow
        }
        if (text[at] != ' ' && text[at] != '\t') {
            return at;
        }
    }
    return std::string_view::npos;
}

} // namespace

std::size_t KxInputStream::availableBeyondWindow() const {
    return 0;
}

std::size_t KxInputStream::read(void* buffer, std::size_t offset, std::size_t count) {
    std::size_t done = 0;
    while (done < count && fill()) {
        const std::size_t step = std::min(count - done, window().size());
        std::memcpy(static_cast<char*>(buffer) + offset + done, m_cursor, step);
        consume(step);
        done += step;
    }
    return done;
}

std::size_t KxInputStream::skip(std::size_t count) {
    std::size_t done = 0;
    while (done < count && fill()) {
        const std::size_t step = std::min(count - done, window().size());
        consume(step);
        done += step;
    }
    return done;
}

void KxInputStream::mark(std::size_t readLimit) {
    if (markSupported()) {
        m_mark = m_cursor != nullptr ? m_cursor : (m_cursor = m_end = m_readable = "");
        m_markLimit = readLimit;
    }
}

bool KxInputStream::reset() {
    if (m_mark == nullptr) {
        return false;
    }
    m_cursor = m_mark;
    return true;
}

bool KxInputStream::extendWindow() {
    if (m_whole) {
        return false;
    }
    if (m_mark != nullptr && static_cast<std::size_t>(m_cursor - m_mark) > m_markLimit) {
        m_mark = nullptr;
    }
    const char* const keep = m_mark != nullptr ? m_mark : m_cursor;
    const auto kept = static_cast<std::size_t>(m_end - keep);
    const auto cursor = static_cast<std::size_t>(m_cursor - keep);
    const std::size_t size = m_buffer != nullptr ? m_bufferSize : 0;
    if (kept >= size) { // twice the size each time, so that bytes that are kept are copied once on average
        const std::size_t larger = std::max(kFirstBuffer, size * 2);
        std::unique_ptr<char[]> fresh(new char[larger]);
        if (kept != 0) {
            std::memcpy(fresh.get(), keep, kept);
        }
        m_buffer = std::move(fresh);
        m_bufferSize = larger;
    } else if (kept != 0 && keep != m_buffer.get()) {
        std::memmove(m_buffer.get(), keep, kept);
    }
    m_cursor = m_buffer.get() + cursor;
    m_end = m_buffer.get() + kept;
    m_mark = m_mark != nullptr ? m_buffer.get() : nullptr;
    m_readable = m_end;
    const std::size_t got = readSome(m_buffer.get() + kept, m_bufferSize - kept);
    m_end += std::min(got, m_bufferSize - kept);
    m_readable = m_end;
    return got != 0;
}

std::size_t KxInputStream::fillLine() {
    if (m_whole) {
        return window().size();
    }
    std::size_t searched = 0; // the line does not end before this; a last LF depends on the character after it
    std::size_t length = logicalLineLength(window());
    while (length == std::string_view::npos) {
        const std::size_t known = window().size();
        const bool more = extendWindow();
        searched = more && known != 0 ? known - 1 : searched;
        length = more ? logicalLineLength(window().substr(searched)) : known - searched;
    }
    return searched + length;
}
