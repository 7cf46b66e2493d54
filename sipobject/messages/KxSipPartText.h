#pragma once

#include "sipobject/address/KxURI.h"
#include "sipobject/headers/KxSipHeader.h"

#include <string_view>

/** Reads the text of a part of a message to be built. The text contains no line end. */
class KX_SIP_API KxSipPartText {
public:
    KxSipPartText() = delete;

    /** Reads a whole URI, with or without angle brackets. Throws KxSipParseError for text after it, and the errors of
        the URI's class. */
    static KxHandle<KxURI> sURI(std::string_view text);
    /** Reads the value of the header. Throws KxSipParseError for more than one value, and the errors of the class. */
    static KxHandle<KxSipHeader> sHeader(const KxString& name, std::string_view text);
};
