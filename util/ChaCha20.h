#pragma once

#include "util/UtilApi.h"

#include <array>
#include <cstdint>

/** The block function of ChaCha20 (RFC 8439 section 2.3), as a source of random bytes. */
class KX_UTIL_API ChaCha20 {
public:
    /** Constants, key, counter, nonce; and as a result the key stream, in the machine's byte order. */
    using Block = std::array<std::uint32_t, 16>;

    ChaCha20() = delete;

    /** The state to begin with. */
    static constexpr Block initialState(const std::array<std::uint32_t, 8>& key,
                                        const std::array<std::uint32_t, 4>& counterAndNonce) {
        return {0x61707865U,
                0x3320646EU,
                0x79622D32U,
                0x6B206574U,
                key[0],
                key[1],
                key[2],
                key[3],
                key[4],
                key[5],
                key[6],
                key[7],
                counterAndNonce[0],
                counterAndNonce[1],
                counterAndNonce[2],
                counterAndNonce[3]};
    }

    /** The 64 bytes that belong to the state. */
    static Block keyStream(const Block& state);
};
