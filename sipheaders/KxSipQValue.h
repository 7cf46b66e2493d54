#pragma once

#include "sipheaders/HeadersApi.h"
#include "util/KxString.h"

#include <cstdint>
#include <optional>

/** A preference between 0 and 1, as a number of thousandths.
    qvalue = ( "0" [ "." 0*3DIGIT ] ) / ( "1" [ "." 0*3("0") ] )              [RFC 3261 25.1] */
class KX_HEADERS_API KxSipQValue {
public:
    KxSipQValue() = delete;

    /** From 0 to 1000, also for a quoted text, and for ".5". None for nil and anything else. */
    static std::optional<std::uint32_t> sThousandths(const KxString& value);
    /** As short as possible: 500 is "0.5". Throws KxSipParseError for more than 1000. */
    static KxString sOf(std::uint32_t thousandths);
};
