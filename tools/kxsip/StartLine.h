#pragma once

#include <string_view>

/** Whether a message can begin with this line, with or without its line end: "TOKEN SP ... SP SIP/n.n" or "SIP/n.n SP
    digit". Accepts more than the parser, so that a message with a bad Request-URI or version is still found. Accepts no
    header line. [RFC 3261 7.1, 7.2] */
bool looksLikeStartLine(std::string_view line);
