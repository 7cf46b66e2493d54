#include "util/ChaCha20.h"

#include <cstring>
#include <type_traits>

namespace {

/** A row of the state. */
using Row = std::uint32_t __attribute__((vector_size(16)));

template <int kBits>
inline void mix(Row& sum, const Row& added, Row& turned) {
    sum += added;
    turned ^= sum;
    turned = turned << kBits | turned >> (32 - kBits);
}

/** The four quarter rounds of the columns. */
inline void mixColumns(Row (&r)[4]) {
    mix<16>(r[0], r[1], r[3]);
    mix<12>(r[2], r[3], r[1]);
    mix<8>(r[0], r[1], r[3]);
    mix<7>(r[2], r[3], r[1]);
}

/** Each row turned left by so many places. */
template <int kSecond, int kThird, int kFourth>
inline void turn(Row (&r)[4]) {
    const auto left = []<int kBy>(Row row, std::integral_constant<int, kBy>) {
        return __builtin_shufflevector(row, row, kBy, kBy + 1, kBy + 2, kBy + 3);
    };
    r[1] = left(r[1], std::integral_constant<int, kSecond>());
    r[2] = left(r[2], std::integral_constant<int, kThird>());
    r[3] = left(r[3], std::integral_constant<int, kFourth>());
}

} // namespace

ChaCha20::Block ChaCha20::keyStream(const Block& state) {
    Row start[4];
    std::memcpy(start, state.data(), sizeof start);
    Row r[4] = {start[0], start[1], start[2], start[3]};
    for (int i = 0; i < 10; ++i) {
        mixColumns(r);
        turn<1, 2, 3>(r);
        mixColumns(r);
        turn<3, 2, 1>(r);
    }
    for (int i = 0; i < 4; ++i) {
        r[i] += start[i];
    }
    Block result;
    std::memcpy(result.data(), r, sizeof r);
    return result;
}
