#pragma once

#include "sipobject/SipApi.h"
#include "util/KxSharedParameters.h"

#include <cstdint>
#include <optional>
#include <string_view>

/** The preference that one value has among others, in thousandths, from 0 to 1000.
    qvalue = ( "0" [ "." 0*3DIGIT ] ) / ( "1" [ "." 0*3("0") ] )              [RFC 3261 25.1]
    "0.5" -> 500; "1." -> 1000; 125 -> "0.125" */
class KX_SIP_API KxSipQValue {
public:
    KxSipQValue() = delete;

    static constexpr std::uint32_t kMost = 1000;

    /** None for a text that is not a qvalue. */
    [[nodiscard]] static std::optional<std::uint32_t> sRead(std::string_view text);
    /** The value of the parameter "q"; kMost when it is absent, none if it is not a qvalue. */
    [[nodiscard]] static std::optional<std::uint32_t> sOf(const KxSharedParameters& parameters);
    /** The shortest text. Throws KxSipParseError "Invalid q value" above kMost. */
    [[nodiscard]] static KxString sWrite(std::uint32_t thousandths);
};
