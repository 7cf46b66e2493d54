#pragma once

#include "util/KxByteArray.h"
#include "util/KxString.h"
#include "util/UtilApi.h"

#include <string_view>

/** Converts bytes to hexadecimal text, two lower-case digits for each byte, and back. */
class KX_UTIL_API KxHexEncoding {
public:
    KxHexEncoding() = delete;

    /** The digits of all bytes; empty for nil. */
    static KxString toHex(const KxHandle<KxByteArray>& bytes);
    /** Writes 2 * bytes.size() digits and no NUL to `out`; returns the end of the digits. */
    static char* toHex(std::string_view bytes, char* out);

    /** The byte that two digits of either case encode. A character that is not a digit counts as 0. */
    [[nodiscard]] static char fromHex(char high, char low);
};
