#pragma once

#include "util/UtilApi.h"

#include <cstddef>
#include <memory>
#include <string_view>

/** A source of bytes. The base keeps a window of the available bytes, so that reading and scanning are pointer moves. A
    derived class only delivers more bytes (readSome) when the window is used up.

    A stream over memory is "whole": its window holds all its bytes and does not move. Any other stream keeps marked
    bytes, and bytes that a parser has looked at but not consumed, in a buffer of its own. A stream is to be used by one
    thread at a time. An exception from readSome is passed to the reader; the stream is unchanged then. */
class KX_UTIL_API KxInputStream {
public:
    static constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

    virtual ~KxInputStream() {}
    KxInputStream(const KxInputStream&) = delete;
    KxInputStream& operator=(const KxInputStream&) = delete;

    /** One byte (0 to 255), or -1 at the end. */
    int read() { return fill() ? static_cast<unsigned char>(*m_cursor++) : -1; }
    /** The next byte without consuming it, or -1 at the end. */
    int peek() { return fill() ? static_cast<unsigned char>(*m_cursor) : -1; }
    /** Reads up to `count` bytes to `buffer + offset`; returns how many there were. */
    std::size_t read(void* buffer, std::size_t offset, std::size_t count);
    /** Skips up to `count` bytes; returns how many there were. */
    std::size_t skip(std::size_t count);
    /** Number of bytes left, as far as it is known without reading. */
    std::size_t available() const { return window().size() + availableBeyondWindow(); }

    /** Marks this place; a later mark replaces it. The mark may be lost after more than `readLimit` bytes. */
    void mark(std::size_t readLimit = kUnlimited);
    /** Goes back to the mark. Returns false, and does not move, when there is none. */
    bool reset();
    virtual bool markSupported() const { return true; }

    /** The available bytes, from the next one on. */
    std::string_view window() const { return {m_cursor, static_cast<std::size_t>(m_end - m_cursor)}; }
    /** End of the bytes that may be loaded. Bytes after the window may be loaded but must not be used. */
    const char* readableEnd() const { return m_readable; }
    /** Skips `count` bytes of the window. */
    void consume(std::size_t count) { m_cursor += count; }
    /** Makes sure that the window holds a byte; returns false at the end. */
    bool fill() { return m_cursor != m_end || extendWindow(); }
    /** Adds bytes after the window without consuming any; returns false at the end. Moves the window. */
    bool extendWindow();
    /** Makes sure that the window holds the first logical line, which ends at a LF that no blank or tab follows;
        returns the length of that line. For a whole stream, whose parsers find the line end themselves, returns the
        length of the window. */
    std::size_t fillLine();
    /** Whether the window holds all bytes and does not move. */
    bool isWhole() const { return m_whole; }

protected:
    KxInputStream() = default;
    /** A whole stream over [begin, end), which must outlive it. The bytes from `end` to `readable` do not belong to the
        stream, but may be loaded by scans that examine many bytes at once. */
    KxInputStream(const char* begin, const char* end, const char* readable)
        : m_cursor(begin), m_end(end), m_readable(readable), m_whole(true) {}

    /** Moves a whole stream to other bytes, as if it had been created over them. */
    void setWindow(const char* begin, const char* end, const char* readable) {
        m_cursor = begin;
        m_end = end;
        m_readable = readable;
        m_mark = nullptr;
    }

    /** Delivers between 1 and `capacity` bytes, or 0 at the end. */
    virtual std::size_t readSome(char* buffer, std::size_t capacity) = 0;
    /** Number of bytes that readSome is known to have left. */
    virtual std::size_t availableBeyondWindow() const;

private:
    const char* m_cursor = nullptr;
    const char* m_end = nullptr;
    const char* m_readable = nullptr; ///< Never before m_end.
    const char* m_mark = nullptr;
    std::size_t m_markLimit;
    std::unique_ptr<char[]> m_buffer; ///< Used by a stream that is not whole.
    std::size_t m_bufferSize;
    bool m_whole = false;
};
