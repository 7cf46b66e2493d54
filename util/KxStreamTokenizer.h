#pragma once

#include "util/KxCharSet.h"
#include "util/KxInputStream.h"
#include "util/KxString.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/** Reads tokens, lines and numbers from a stream. White space is blanks and tabs. Lines end with LF; a CR before the LF
    belongs to the line end. These functions throw only when there is no memory. */
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

    /** Consumes the rest of the line and its line end. */
    static void sDiscardLine(KxInputStream& in);

    /** Reads the rest of the line, without leading white space. The line end is consumed but not returned. */
    static KxString sGetLine(KxInputStream& in);
    /** As above, into a buffer of `size` bytes including the NUL. Returns false when the line does not fit (the buffer
        holds what fits, and the whole line is consumed) or when the stream is at its end (the buffer is then empty). */
    static bool sGetLine(KxInputStream& in, char* buffer, std::size_t size);

    /** Skips white space and reads the characters up to the first delimiter, which stays unread, or to the end. */
    static KxString sGetToken(KxInputStream& in, const KxCharSet& delimiters);
    static KxString sGetToken(KxInputStream& in, const char* delimiters) {
        return sGetToken(in, KxCharSet(delimiters));
    }
    /** As above, into a buffer of `size` bytes including the NUL. Returns false when the token does not fit (its rest
        stays unread) or when the stream is at its end (the buffer is then empty). */
    static bool sGetToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size);
    /** As sGetToken, but the position of the stream and its mark do not change. */
    static bool sPeekToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size);

    /** Skips white space and reads decimal digits. Returns 0 when there are none (the next character stays unread), and
        4294967295 when the number is larger. */
    static std::uint32_t sGetUnsigned(KxInputStream& in) {
        sDiscardWhite(in);
        std::uint64_t value = 0;
        std::size_t taken = 0;
        do {
            const std::string_view window = in.window();
            for (taken = 0; taken != window.size() && KxAscii::isDigit(window[taken]); ++taken) {
                value = value * 10 + static_cast<std::uint64_t>(window[taken] - '0');
                if (value > 0xFFFFFFFFU) {
                    value = 0xFFFFFFFFU;
                }
            }
            in.consume(taken);
        } while (taken != 0 && in.window().empty() && in.extendWindow());
        return static_cast<std::uint32_t>(value);
    }

    /** Skips white space and reads a quoted text. Returns the text between the double quotes, with "\x" read as x; the
        closing quote is consumed. Returns an empty text when there is no double quote. A text without a closing quote
        ends with the stream. */
    static KxString sGetQuote(KxInputStream& in);
};

/** Reads a word: skips white space and takes the characters up to the next white space or line end. */
KX_UTIL_API KxInputStream& operator>>(KxInputStream& in, KxString& word);
