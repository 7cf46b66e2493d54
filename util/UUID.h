#pragma once

#include "util/UtilApi.h"

#include <cstddef>

/** Random identifiers (RFC 4122 version 4) made of the system's random bytes, so that none can be guessed from others.
    Every thread has bytes of its own, which the child of a fork does not use. Usable from any thread. */
class KX_UTIL_API UUID {
public:
    static constexpr std::size_t kTextLength = 36;

    UUID() = delete;

    /** Writes a new one in lower case, 8-4-4-4-12 digits, and a NUL: kTextLength + 1 characters.
        @throws std::exception when the system has no random bytes. */
    static void uuid_create_string(char* buffer);
};
