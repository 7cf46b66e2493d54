#pragma once

#include "sipobject/SipApi.h"

#include <cstddef>
#include <string_view>

/** What can be read of a start line, whatever is wrong with it: for the logs, and to find the next message after one
    that was refused. Message classes read their start lines themselves. [RFC 3261 7.1, 7.2] */
struct KX_SIP_API KxSipStartLine {
    std::string_view method; ///< Of a request, else empty: the text up to the first blank.
    unsigned code = 0;       ///< Of a response, else 0; also 0 if it can't be read.
    std::string_view reason; ///< Of a response, else empty.
    bool isResponse = false; ///< Whether the line begins with "SIP/", in any letter case.

    /** Reads the first line of the bytes. The views are parts of it, without white space around them. */
    static KxSipStartLine sRead(std::string_view bytes);

    /** Whether a message can begin with this line, with or without its line end: "TOKEN SP ... SP SIP/n.n" or "SIP/n.n
        SP digit". Accepts more than the parser, so that a message with a bad Request-URI or version is still found.
        Accepts no header line. */
    static bool sIsLikely(std::string_view line);
    /** Returns where the first likely start line begins. `position` must be the beginning of a line, or the size of the
        bytes, which is returned if there is none. */
    static std::size_t sFind(std::string_view bytes, std::size_t position = 0);
};
