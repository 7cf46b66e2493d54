#pragma once

#include "tools/kxsip/Endpoint.h"

#include <chrono>
#include <string>

/** Time, source, destination and transport of a captured message. */
struct Origin {
    std::chrono::microseconds time{}; ///< When the last byte was captured, since 1970.
    Endpoint source;
    Endpoint destination;
    const char* transport = ""; ///< "UDP" or "TCP".
};

/** Returns the time, which is since 1970, as "2026-11-21T13:22:21.935691Z". */
std::string utcText(std::chrono::microseconds time);
