#pragma once

#include "sipobject/KxSipLine.h"
#include "util/KxSharedParameters.h"

/** Reads header parameters in the RFC grammar, in which nothing after a value is dropped. */
class KX_SIP_API KxSipParameterText {
public:
    KxSipParameterText() = delete;

    /** Reads what follows a value: *( SEMI generic-param ), up to the comma or the end of the line, which stays unread.
        The list then has these parameters only, the last one of each name. Blanks and tabs around ";" and "=" mean
        nothing. A value is a quoted string, kept with its quotes, or text without white space, quotes, "<" and ">";
        "a=" is "a". Returns a fault for anything else, such as ";;"; the list is then unchanged. [RFC 3261 25.1] */
    static KxSipFault sRead(KxSipLine& line, KxSharedParameters& parameters);
};
