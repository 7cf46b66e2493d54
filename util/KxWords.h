#pragma once

#include "util/UtilApi.h"

#include <string_view>

class KxStringBuffer;

/** Words that recur in signalling traffic: methods, option tags, transports, parameter names and values. Strings made
    of one of them share one constant instead of a block each. Adding a word here changes nothing but the cost. */
namespace KxWords {

/** The constant for exactly this text, or null. */
KX_UTIL_API KxStringBuffer* find(std::string_view text);

/** The constant for this text, or a new buffer with a copy and one reference, which the caller takes over. */
KX_UTIL_API KxStringBuffer* findOrCopy(std::string_view text);

} // namespace KxWords
