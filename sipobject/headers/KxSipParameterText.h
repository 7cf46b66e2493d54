#pragma once

#include "sipobject/KxSipLine.h"
#include "util/KxSharedParameters.h"
#include "util/KxStreamTokenizer.h"

/** Reads header parameters in the RFC grammar, in which nothing after a value is dropped. */
class KX_SIP_API KxSipParameterText {
public:
    KxSipParameterText() = delete;

    /** Reads what follows a value: *( SEMI generic-param ), up to the comma or the end of the line, which stays unread.
        The list then has these parameters only, the last one of each name. Blanks and tabs around ";" and "=" mean
        nothing. A value is a quoted string, kept with its quotes, or text without white space, quotes, "<" and ">";
        "a=" is "a". Returns a fault for anything else, such as ";;"; the list is then unchanged. [RFC 3261 25.1] */
    static KxSipFault sRead(KxSipLine& line, KxSharedParameters& parameters) {
        const int c = KxStreamTokenizer::sDiscardWhite(line);
        return sIsEnd(c) && parameters.empty() ? KxSipFault() : sReadMore(line, parameters);
    }

    /** Whether a value ends before this character, -1 for the end of the text. */
    static bool sIsEnd(int c) { return c == '\r' || c == ',' || c < 0 || c == '\n'; }

    static constexpr const char* kInvalid = "Invalid text after the value of a header";

private:
    static KxSipFault sReadMore(KxSipLine& line, KxSharedParameters& parameters);
};
