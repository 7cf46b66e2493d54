#pragma once

#include <cstdint>

/** The result of reading and checking a message. */
enum KxStatus : std::uint16_t {
    KX_STATUS_VALID = 0,                    ///< No errors.
    KX_STATUS_INCOMPLETE = 1,               ///< A header line or the body could not be read; the rest is valid.
    KX_STATUS_UNUSABLE = 2,                 ///< The start line or the headers as a whole can't be used.
    KX_STATUS_UNSUPPORTED_URI_SCHEME = 416, ///< To be answered with 416.
    KX_STATUS_VERSION_NOT_SUPPORTED = 505,  ///< To be answered with 505.
};
