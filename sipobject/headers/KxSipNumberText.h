#pragma once

#include "sipobject/KxSipLine.h"

#include <cstdint>

/** Reads numbers that must be exact. */
class KX_SIP_API KxSipNumberText {
public:
    KxSipNumberText() = delete;

    /** Reads the digits after white space, up to a blank, a ";", a "(" or the end of the line. Returns a fault with the
        text `otherwise` for no digit, another character, and a number above `most`; `number` is then unchanged. */
    static KxSipFault sRead(KxSipLine& line, std::uint32_t most, std::uint32_t& number, const char* otherwise);
};
