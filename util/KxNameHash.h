#pragma once

#include "util/UtilApi.h"

#include <cstdint>
#include <string_view>

/** Hashes of names, for tables whose keys come from the network. They depend on every character and on a random number
    that is drawn when the process starts, so that a sender cannot choose names that collide. */
namespace KxNameHash {

KX_UTIL_API std::uint32_t exact(std::string_view name);
/** Ignores ASCII case. */
KX_UTIL_API std::uint32_t noCase(std::string_view name);

} // namespace KxNameHash
