#include "util/KxPairIndex.h"

#include <random>

namespace {

const std::uint64_t s_hashKey = std::random_device()() * 0x9E3779B97F4A7C15ULL;

std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

} // namespace

std::uint32_t KxPairIndex::hash(std::string_view name) {
    std::uint64_t value = s_hashKey ^ name.size();
    for (std::size_t at = 0; at < name.size(); at += 8) {
        std::uint64_t word = 0;
        for (const char c : name.substr(at, 8)) {
            word = word << 8 | static_cast<unsigned char>(KxAscii::toLower(c));
        }
        value = mix(value ^ word, 0xA0761D6478BD642FULL);
        value = mix(value ^ s_hashKey, 0xE7037ED1A0B428DBULL);
    }
    return static_cast<std::uint32_t>(value);
}
