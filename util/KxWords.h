#pragma once

#include "util/UtilApi.h"

#include <string_view>

class KxStringBuffer;

/** Words that are frequent in signalling traffic: methods, option tags, transports, parameter names and values. Strings
    with the same word share one constant, and need no block of their own. A new word changes only the cost. */
namespace KxWords {

/** The constant for this text, or a new buffer with a copy and one reference, which the caller takes over. */
KX_UTIL_API KxStringBuffer* findOrCopy(std::string_view text);

} // namespace KxWords
