#pragma once

#include "util/KxByteArray.h"
#include "util/KxBytes.h"
#include "util/UtilApi.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/** MD5 (RFC 1321), as digest authentication needs it (RFC 2617). MD5 alone does not protect against forgery.

        MD5 sum;
        sum.update("alice:");
        sum.update(realm);
        const MD5::Raw digest = sum.finish();

    An object is to be used by one thread at a time. Only digest() allocates. */
class KX_UTIL_API MD5 {
public:
    struct Raw {
        unsigned char bytes[16];

        std::string_view view() const { return {reinterpret_cast<const char*>(bytes), sizeof bytes}; }
    };

    /** The 16 bytes of the digest as a new array. Nil reads as empty. */
    static KxHandle<KxByteArray> digest(const KxHandle<KxByteArray>& bytes);
    /** The digest of a text given in one piece. */
    [[nodiscard]] static Raw digestOf(std::string_view text);

    /** Adds a piece to the text of the digest; up to 2^61 bytes in all. */
    void update(std::string_view piece) {
        const std::size_t waiting = m_length % kBlock;
        if (piece.size() < kBlock - waiting) {
            KxBytes::copyMedium(m_rest + waiting, piece.data(), piece.size());
            m_length += piece.size();
        } else {
            updateBlocks(piece);
        }
    }
    /** Returns the digest of all pieces. The object can then be used for another digest. */
    [[nodiscard]] Raw finish();

private:
    static constexpr std::size_t kBlock = 64;
    static constexpr std::array<std::uint32_t, 4> kStart{0x67452301U, 0xEFCDAB89U, 0x98BADCFEU, 0x10325476U};

    /** As update, for a piece that completes at least one block. */
    void updateBlocks(std::string_view piece);
    /** Adds `count` whole blocks. */
    static void addBlocks(std::array<std::uint32_t, 4>& state, const char* bytes, std::size_t count);

    std::array<std::uint32_t, 4> m_state = kStart;
    std::uint64_t m_length = 0;
    char m_rest[kBlock]; // the first m_length % kBlock bytes wait for a whole block
};
