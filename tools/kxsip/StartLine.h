#pragma once

#include <string_view>

/** Whether a message could begin with this line (its line end may be there): "TOKEN SP ... SP SIP/n.n" or
    "SIP/n.n SP digit". Takes more than the parser does, so that a message with a bad Request-URI or version is still
    seen as one; takes no header line. [RFC 3261 7.1, 7.2] */
bool looksLikeStartLine(std::string_view line);
