#pragma once

#include "sipobject/KxSipLine.h"

#include <cstdint>
#include <optional>
#include <string_view>

/** Numbers in the text of a header: those that must be exact, and those in parameters. */
class KX_SIP_API KxSipNumberText {
public:
    KxSipNumberText() = delete;

    /** Reads the digits after white space, up to a blank, a ";", a "(" or the end of the line. Returns a fault with the
        text `otherwise` for no digit, another character, and a number above `most`; `number` is then unchanged. */
    static KxSipFault sRead(KxSipLine& line, std::uint32_t most, std::uint32_t& number, const char* otherwise);

    /** The number of a delta-seconds, at most 4294967295; none for other text. delta-seconds = 1*DIGIT
        [RFC 3261 25.1] */
    [[nodiscard]] static std::optional<std::uint32_t> sSeconds(std::string_view text);
    /** The digits of the number. */
    [[nodiscard]] static KxString sText(std::uint32_t number);
};
