#include "util/MD5.h"

#include <bit>
#include <cstring>
#include <utility>

namespace {

/** floor(2^32 * abs(sin(i + 1))). */
constexpr std::array<std::uint32_t, 64> kSines{
    0xD76AA478U, 0xE8C7B756U, 0x242070DBU, 0xC1BDCEEEU, 0xF57C0FAFU, 0x4787C62AU, 0xA8304613U, 0xFD469501U,
    0x698098D8U, 0x8B44F7AFU, 0xFFFF5BB1U, 0x895CD7BEU, 0x6B901122U, 0xFD987193U, 0xA679438EU, 0x49B40821U,
    0xF61E2562U, 0xC040B340U, 0x265E5A51U, 0xE9B6C7AAU, 0xD62F105DU, 0x02441453U, 0xD8A1E681U, 0xE7D3FBC8U,
    0x21E1CDE6U, 0xC33707D6U, 0xF4D50D87U, 0x455A14EDU, 0xA9E3E905U, 0xFCEFA3F8U, 0x676F02D9U, 0x8D2A4C8AU,
    0xFFFA3942U, 0x8771F681U, 0x6D9D6122U, 0xFDE5380CU, 0xA4BEEA44U, 0x4BDECFA9U, 0xF6BB4B60U, 0xBEBFBC70U,
    0x289B7EC6U, 0xEAA127FAU, 0xD4EF3085U, 0x04881D05U, 0xD9D4D039U, 0xE6DB99E5U, 0x1FA27CF8U, 0xC4AC5665U,
    0xF4292244U, 0x432AFF97U, 0xAB9423A7U, 0xFC93A039U, 0x655B59C3U, 0x8F0CCC92U, 0xFFEFF47DU, 0x85845DD1U,
    0x6FA87E4FU, 0xFE2CE6E0U, 0xA3014314U, 0x4E0811A1U, 0xF7537E82U, 0xBD3AF235U, 0x2AD7D2BBU, 0xEB86D391U};

constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

constexpr std::uint32_t littleEndian(std::uint32_t word) {
    if constexpr (std::endian::native == std::endian::little) {
        return word;
    } else {
        return __builtin_bswap32(word);
    }
}

inline std::uint32_t load(const char* from) {
    return littleEndian(KxBytes::load<std::uint32_t>(from));
}

inline void store(void* to, std::uint32_t word) {
    word = littleEndian(word);
    __builtin_memcpy(to, &word, sizeof word);
}

/** Step `kStep` of 64. The registers are not moved; instead their roles change from step to step. */
template <std::size_t kStep>
[[gnu::always_inline]] inline void step(std::uint32_t (&r)[4], const char* block) {
    constexpr std::size_t kRound = kStep / 16;
    constexpr std::size_t kFactors[4] = {1, 5, 3, 7};
    constexpr std::size_t kOffsets[4] = {0, 1, 5, 0};
    constexpr std::size_t kWord = (kFactors[kRound] * kStep + kOffsets[kRound]) % 16;
    std::uint32_t& a = r[(64 - kStep) % 4];
    const std::uint32_t b = r[(65 - kStep) % 4];
    const std::uint32_t c = r[(66 - kStep) % 4];
    const std::uint32_t d = r[(67 - kStep) % 4];
    a += kSines[kStep] + load(block + 4 * kWord);
    if constexpr (kRound == 0) {
        a += d ^ (b & (c ^ d));
    } else if constexpr (kRound == 1) {
        a += (d & b) + (~d & c); // no bit is set in both
    } else if constexpr (kRound == 2) {
        a += b ^ (c ^ d);
    } else {
        a += c ^ (b | ~d);
    }
    a = std::rotl(a, kShifts[kRound][kStep % 4]) + b;
}

template <std::size_t... kSteps>
[[gnu::always_inline]] inline void steps(std::uint32_t (&r)[4], const char* block, std::index_sequence<kSteps...>) {
    (step<kSteps>(r, block), ...);
}

/** Clears a block from `end` to the length that is stored in its last 8 bytes, and some bytes of that. */
[[gnu::always_inline]] inline void clearFrom(char* block, std::size_t end) {
    constexpr char kZeros[16] = {};
    constexpr std::size_t kLast = 64 - sizeof kZeros;
    if (end > kLast) {
        __builtin_memcpy(block + end, kZeros, 8);
        return;
    }
    for (; end < kLast; end += sizeof kZeros) {
        __builtin_memcpy(block + end, kZeros, sizeof kZeros);
    }
    __builtin_memcpy(block + kLast, kZeros, sizeof kZeros);
}

} // namespace

void MD5::addBlocks(std::array<std::uint32_t, 4>& state, const char* bytes, std::size_t count) {
    std::uint32_t r[4] = {state[0], state[1], state[2], state[3]};
    for (; count != 0; --count, bytes += kBlock) {
        const std::uint32_t before[4] = {r[0], r[1], r[2], r[3]};
        steps(r, bytes, std::make_index_sequence<64>());
        for (std::size_t i = 0; i < 4; ++i) {
            r[i] += before[i];
        }
    }
    state = {r[0], r[1], r[2], r[3]};
}

void MD5::updateBlocks(std::string_view piece) {
    const std::size_t waiting = m_length % kBlock;
    m_length += piece.size();
    if (waiting != 0) {
        KxBytes::copyMedium(m_rest + waiting, piece.data(), kBlock - waiting);
        addBlocks(m_state, m_rest, 1);
        piece.remove_prefix(kBlock - waiting);
    }
    const std::size_t blocks = piece.size() / kBlock;
    addBlocks(m_state, piece.data(), blocks);
    piece.remove_prefix(blocks * kBlock);
    KxBytes::copyMedium(m_rest, piece.data(), piece.size());
}

MD5::Raw MD5::finish() {
    std::size_t end = m_length % kBlock;
    m_rest[end++] = '\x80';
    if (end > kBlock - 8) {
        std::memset(m_rest + end, 0, kBlock - end);
        addBlocks(m_state, m_rest, 1);
        end = 0;
    }
    clearFrom(m_rest, end);
    const std::uint64_t bits = m_length * 8;
    store(m_rest + kBlock - 8, static_cast<std::uint32_t>(bits));
    store(m_rest + kBlock - 4, static_cast<std::uint32_t>(bits >> 32));
    addBlocks(m_state, m_rest, 1);
    Raw digest;
    for (std::size_t i = 0; i < 4; ++i) {
        store(digest.bytes + 4 * i, m_state[i]);
    }
    m_state = kStart;
    m_length = 0;
    return digest;
}

MD5::Raw MD5::digestOf(std::string_view text) {
    MD5 sum;
    sum.update(text);
    return sum.finish();
}

KxHandle<KxByteArray> MD5::digest(const KxHandle<KxByteArray>& bytes) {
    const Raw raw = digestOf(bytes.isNil() ? std::string_view() : bytes->view());
    return KxByteArray::sCreate(sizeof raw.bytes, raw.bytes);
}
