#pragma once

#include "util/UtilApi.h"

#include <cstddef>

/** Random identifiers (RFC 4122 version 4) that nobody can guess from those he has seen: every thread draws from a
    cipher of its own, keyed by the system and keyed anew after a fork. Usable from any thread. */
class KX_UTIL_API UUID {
public:
    static constexpr std::size_t kTextLength = 36;

    UUID() = delete;

    /** Writes a new one in lower case, 8-4-4-4-12 digits, and a NUL: kTextLength + 1 characters.
        @throws std::exception when the system has no random numbers for the thread's first one. */
    static void uuid_create_string(char* buffer);
};
