#pragma once

#include "util/KxByteArray.h"
#include "util/KxString.h"
#include "util/UtilApi.h"

#include <string_view>

/** Bytes as hexadecimal text, two lower-case digits a byte, and back. */
class KX_UTIL_API KxHexEncoding {
public:
    KxHexEncoding() = delete;

    /** The digits of all bytes; empty for nil. */
    static KxString toHex(const KxHandle<KxByteArray>& bytes);
    /** Writes 2 * bytes.size() digits and no NUL to `out`; returns the place behind them. */
    static char* toHex(std::string_view bytes, char* out);

    /** The byte that two digits of either case encode. A character that is no digit counts as 0. */
    static char fromHex(char high, char low);
};
