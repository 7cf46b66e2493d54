#pragma once

#include "util/UtilApi.h"

#include <cstdint>

/** A point in time. */
struct KX_UTIL_API KxTime {
    std::int64_t m_microseconds = 0; ///< Since 1970-01-01 00:00:00 UTC.

    /** The current time of the system clock. Usable from any thread. */
    static KxTime sGetCurrentTime();
};
