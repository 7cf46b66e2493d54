#pragma once

#include "util/KxBytes.h"
#include "util/KxString.h"
#include "util/UtilApi.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/** A sink of bytes. The base keeps a window of free room, so that writing is a copy and a pointer move. A derived class
    takes what does not fit (writeBeyondWindow) and may offer a new window. A class without a window gets every piece
    through writeBeyondWindow. To be used by one thread at a time. */
class KX_UTIL_API KxOutputStream {
public:
    virtual ~KxOutputStream();
    KxOutputStream(const KxOutputStream&) = delete;
    KxOutputStream& operator=(const KxOutputStream&) = delete;

    /** One byte. */
    void write(char byte) {
        if (m_cursor != m_end) {
            *m_cursor++ = byte;
        } else {
            writeBeyondWindow(&byte, 1);
        }
    }
    /** `count` bytes from `buffer + offset`. */
    void write(const void* buffer, std::size_t offset, std::size_t count) {
        write(std::string_view(static_cast<const char*>(buffer) + offset, count));
    }
    void write(std::string_view text) {
        if (text.size() <= static_cast<std::size_t>(m_end - m_cursor)) {
            m_cursor = KxBytes::copy(m_cursor, text.data(), text.size());
        } else {
            writeBeyondWindow(text.data(), text.size());
        }
    }
    /** Pieces of text, one after the other. */
    template <class... Texts>
    [[gnu::always_inline]] void writeAll(const Texts&... texts) {
        if ((texts.size() + ...) <= static_cast<std::size_t>(m_end - m_cursor)) {
            char* at = m_cursor;
            ((at = KxBytes::copy(at, texts.data(), texts.size())), ...);
            m_cursor = at;
        } else {
            (write(texts), ...);
        }
    }
    /** Passes on what the sink has held back. */
    virtual void flush() {}

    KxOutputStream& operator<<(std::string_view text) {
        write(text);
        return *this;
    }
    /** Null writes nothing. */
    KxOutputStream& operator<<(const char* text) { return text == nullptr ? *this : *this << std::string_view(text); }
    KxOutputStream& operator<<(const KxString& text) { return *this << text.view(); }
    KxOutputStream& operator<<(char c) {
        write(c);
        return *this;
    }
    KxOutputStream& operator<<(int number) { return *this << static_cast<long>(number); }
    KxOutputStream& operator<<(unsigned number) { return *this << static_cast<unsigned long>(number); }
    KxOutputStream& operator<<(long number);
    KxOutputStream& operator<<(unsigned long number);
    KxOutputStream& operator<<(KxOutputStream& (*manipulator)(KxOutputStream&)) { return manipulator(*this); }

protected:
    KxOutputStream() = default;

    /** Takes bytes for which the window has no room. */
    virtual void writeBeyondWindow(const char* bytes, std::size_t count) = 0;

    /** Offers [begin, end) as free room. Later, the bytes from `begin` to cursor() have been written. */
    void setWindow(char* begin, char* end) {
        m_cursor = begin;
        m_end = end;
    }
    char* cursor() const { return m_cursor; }

private:
    template <class Number>
    void writeNumber(Number number);

    char* m_cursor = nullptr;
    char* m_end = nullptr;
};

/** Writes CR LF, the line end of SIP. Does not flush. */
KX_UTIL_API KxOutputStream& endl(KxOutputStream& out);
