#pragma once

#include "sipobject/SipApi.h"
#include "util/KxString.h"

#include <cstdint>
#include <optional>
#include <string_view>

/** Decimal numbers, as whole numbers of the unit of their last place: with 3 places, "0.5" is 500. */
class KX_SIP_API KxSipDecimal {
public:
    KxSipDecimal() = delete;

    /** The number of a text: *DIGIT [ "." *DIGIT ] with at least one digit. Further places are dropped, and what is too
        large reads as 2^64 - 1. None for other text. */
    [[nodiscard]] static std::optional<std::uint64_t> sRead(std::string_view text, unsigned places);
    /** The shortest text of a number with up to 9 places. */
    [[nodiscard]] static KxString sWrite(std::uint64_t number, unsigned places);
};
