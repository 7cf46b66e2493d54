#pragma once

#include "util/UtilApi.h"

#include <cstddef>
#include <memory>
#include <string_view>

/** What a parser has found out about the rest of a whole stream, so that the many values of a line need not each look
    through it to its end. Belongs to whoever uses it; nothing here reads it. */
struct KxScanMemo {
    const char* at = nullptr; ///< Where the last question was asked; null before the first.
    bool quoted;              ///< Whether an odd number of quotes stood before that.
    const char* stop[2];      ///< The next answer for a question asked with either parity; null when not known.
    bool found[2];
};

/** A source of bytes. The base keeps a window of the bytes at hand, so that reading and scanning are pointer moves;
    a class that derives from it only delivers more bytes (readSome) when the window runs dry.

    A stream over memory is "whole": its window is all there is and stays put. Any other keeps what was marked, and
    what a parser looked ahead at, in a buffer of its own. A stream is used by one thread at a time. Whatever readSome
    throws passes to the reader; the stream stands as before. */
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
    /** Passes over up to `count` bytes; returns how many there were. */
    std::size_t skip(std::size_t count);
    /** Bytes left, as far as is known without reading. */
    std::size_t available() const { return window().size() + availableBeyondWindow(); }

    /** Remembers this place; a later mark replaces it. It need not hold beyond `readLimit` bytes. */
    void mark(std::size_t readLimit = kUnlimited);
    /** Back to the mark; false (and nothing moves) where there is none. */
    bool reset();
    virtual bool markSupported() const { return true; }

    /** The bytes at hand, from the next one on. */
    std::string_view window() const { return {m_cursor, static_cast<std::size_t>(m_end - m_cursor)}; }
    /** Where the bytes end that may be loaded, though not used, from the window on. */
    const char* readableEnd() const { return m_readable; }
    /** Passes over `count` bytes of the window. */
    void consume(std::size_t count) { m_cursor += count; }
    /** Makes sure that the window holds a byte; false at the end. */
    bool fill() { return m_cursor != m_end || extendWindow(); }
    /** Adds bytes behind the window without consuming any; false at the end. Moves the window. */
    bool extendWindow();
    /** True when the window is all there is and stays where it is. */
    bool isWhole() const { return m_whole; }
    KxScanMemo& scanMemo() { return m_scanMemo; }

protected:
    KxInputStream() = default;
    /** A whole stream over [begin, end), which must outlive it. The bytes up to `readable` are not the stream's, but may
        be loaded by scans that look at many bytes at once. */
    KxInputStream(const char* begin, const char* end, const char* readable)
        : m_cursor(begin), m_end(end), m_readable(readable), m_whole(true) {}

    /** Delivers between 1 and `capacity` bytes, or 0 at the end. */
    virtual std::size_t readSome(char* buffer, std::size_t capacity) = 0;
    /** Bytes that readSome is known to have still. */
    virtual std::size_t availableBeyondWindow() const;

private:
    const char* m_cursor = nullptr;
    const char* m_end = nullptr;
    const char* m_readable = nullptr; ///< Never before m_end.
    const char* m_mark = nullptr;
    std::size_t m_markLimit;
    std::unique_ptr<char[]> m_buffer; ///< Of a stream that is not whole.
    std::size_t m_bufferSize;
    bool m_whole = false;
    KxScanMemo m_scanMemo;
};
