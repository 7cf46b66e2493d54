#pragma once

#include "util/KxCharSet.h"
#include "util/KxInputStream.h"
#include "util/KxString.h"

#include <cstddef>
#include <cstdint>

/** Reads tokens, lines and numbers from a stream. White space is blanks and tabs; lines end with LF, and a CR before it
    belongs to the line end. Nothing here throws but for want of memory. */
class KX_UTIL_API KxStreamTokenizer {
public:
    KxStreamTokenizer() = delete;

    /** Skips white space; returns the next character without consuming it, -1 at the end. */
    static int sDiscardWhite(KxInputStream& in) {
        int c = in.peek();
        while (c == ' ' || c == '\t') {
            in.consume(1);
            c = in.peek();
        }
        return c;
    }

    /** Consumes the rest of the line with its line end. */
    static void sDiscardLine(KxInputStream& in);

    /** The rest of the line from its first non-white character, without the line end, which is consumed. */
    static KxString sGetLine(KxInputStream& in);
    /** As above into a buffer of `size` bytes, NUL included; false when it does not fit (the line is consumed all the
        same, the buffer holds what fits) or when the stream is at its end (the buffer is empty then). */
    static bool sGetLine(KxInputStream& in, char* buffer, std::size_t size);

    /** Skips white space; the characters up to the first delimiter, which stays unread, or the end. */
    static KxString sGetToken(KxInputStream& in, const KxCharSet& delimiters);
    static KxString sGetToken(KxInputStream& in, const char* delimiters) {
        return sGetToken(in, KxCharSet(delimiters));
    }
    /** As above into a buffer of `size` bytes, NUL included; false when the token does not fit (what does not is
        unread) or the stream is at its end (the buffer is empty then). */
    static bool sGetToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size);
    /** As sGetToken, and the stream stays where it was; its mark, too. */
    static bool sPeekToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size);

    /** Skips white space and reads decimal digits; 0 when there are none (what stands there stays unread), 4294967295
        when the number is larger. */
    static std::uint32_t sGetUnsigned(KxInputStream& in) {
        int c = sDiscardWhite(in);
        std::uint64_t value = 0;
        for (; c >= '0' && c <= '9'; c = in.peek()) {
            value = value * 10 + static_cast<std::uint64_t>(c - '0');
            if (value > 0xFFFFFFFFU) {
                value = 0xFFFFFFFFU;
            }
            in.consume(1);
        }
        return static_cast<std::uint32_t>(value);
    }

    /** Skips white space; where a double quote stands, the text up to the closing one (consumed), "\x" giving x; empty
        where none stands. An open string ends with the stream. */
    static KxString sGetQuote(KxInputStream& in);
};

/** Reads a word: skips white space, takes the characters up to the next white space or line end. */
KX_UTIL_API KxInputStream& operator>>(KxInputStream& in, KxString& word);
