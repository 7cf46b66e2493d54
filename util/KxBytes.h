#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/** Operations on short runs of bytes, as most tokens are: a few overlapping moves instead of a call. They use the
    builtin memcpy: where the library's memcpy is checked, the compiler treats it as more than a move and inlines less
    of the code around it. */
namespace KxBytes {

template <class Word>
Word load(const char* at) {
    Word word;
    __builtin_memcpy(&word, at, sizeof word);
    return word;
}

/** The most bytes that copyShort copies. */
inline constexpr std::size_t kShortCopy = 32;

/** Copies up to kShortCopy bytes; returns the end of the copy. */
[[gnu::always_inline]] inline char* copyShort(char* to, const char* from, std::size_t count) {
    if (count >= 16) {
        __builtin_memcpy(to, from, 16);
        __builtin_memcpy(to + count - 16, from + count - 16, 16);
    } else if (count >= 8) {
        __builtin_memcpy(to, from, 8);
        __builtin_memcpy(to + count - 8, from + count - 8, 8);
    } else if (count >= 4) {
        __builtin_memcpy(to, from, 4);
        __builtin_memcpy(to + count - 4, from + count - 4, 4);
    } else if (count != 0) {
        to[0] = from[0];
        to[count / 2] = from[count / 2];
        to[count - 1] = from[count - 1];
    }
    return to + count;
}

/** The most bytes that copyMedium copies. */
inline constexpr std::size_t kMediumCopy = 63;

/** Copies up to kMediumCopy bytes; returns the end of the copy. Needs no call. */
[[gnu::always_inline]] inline char* copyMedium(char* to, const char* from, std::size_t count) {
    if (count > kShortCopy) {
        __builtin_memcpy(to, from, kShortCopy);
        __builtin_memcpy(to + count - kShortCopy, from + count - kShortCopy, kShortCopy);
        return to + count;
    }
    return copyShort(to, from, count);
}

/** How many bytes after the end of a text writers may overwrite where there is room. */
inline constexpr std::size_t kSlack = 12;

/** Copies `count` bytes; returns the end of the copy. */
inline char* copy(char* to, const char* from, std::size_t count) {
    if (count <= kShortCopy) {
        return copyShort(to, from, count);
    }
    __builtin_memcpy(to, from, count);
    return to + count;
}

/** Whether two runs of `count` bytes are equal. */
inline bool equal(const char* a, const char* b, std::size_t count) {
    if (count < 4) {
        return count == 0 || (a[0] == b[0] && a[count / 2] == b[count / 2] && a[count - 1] == b[count - 1]);
    }
    if (count < 8) {
        return load<std::uint32_t>(a) == load<std::uint32_t>(b) &&
               load<std::uint32_t>(a + count - 4) == load<std::uint32_t>(b + count - 4);
    }
    if (load<std::uint64_t>(a) != load<std::uint64_t>(b)) {
        return false;
    }
    for (std::size_t at = 8; at + 8 < count; at += 8) {
        if (load<std::uint64_t>(a + at) != load<std::uint64_t>(b + at)) {
            return false;
        }
    }
    return load<std::uint64_t>(a + count - 8) == load<std::uint64_t>(b + count - 8);
}

/** Whether the text begins with a literal. */
template <std::size_t kSize>
bool startsWith(std::string_view text, const char (&literal)[kSize]) {
    return text.size() >= kSize - 1 && __builtin_memcmp(text.data(), literal, kSize - 1) == 0;
}

/** Whether the text ends with a literal. */
template <std::size_t kSize>
bool endsWith(std::string_view text, const char (&literal)[kSize]) {
    return text.size() >= kSize - 1 &&
           __builtin_memcmp(text.data() + text.size() - (kSize - 1), literal, kSize - 1) == 0;
}

/** The first and last four bytes of a run, and its length. For a run of up to eight bytes these are all its bytes. */
struct Ends {
    Ends(const char* at, std::size_t length) : count(static_cast<std::uint32_t>(length)) {
        if (length >= 4) {
            both = load<std::uint32_t>(at) | std::uint64_t{load<std::uint32_t>(at + length - 4)} << 32;
        } else if (length != 0) {
            const auto byte = [at](std::size_t i) { return std::uint32_t{static_cast<unsigned char>(at[i])}; };
            both = byte(0) | byte(length / 2) << 8 | byte(length - 1) << 16;
        }
    }
    /** A hash of `bits` bits. */
    std::size_t hash(int bits) const { return static_cast<std::size_t>((both * 0x9E3779B97F4A7C15ULL) >> (64 - bits)); }
    /** A form in which texts that differ only in letter case are equal. Some other texts become equal, too. */
    Ends folded() const {
        Ends lower(*this);
        lower.both |= 0x2020202020202020ULL;
        return lower;
    }
    bool operator==(const Ends&) const = default;
    /** Whether the ends hold all bytes of the run. */
    bool areWhole() const { return count <= sizeof both; }

    std::uint64_t both = 0;
    std::uint32_t count;
};

#ifdef __SSE2__
/** Loads `count` bytes, at most 15; the bytes after them are 0. */
[[gnu::noinline]] inline __m128i loadShort(const char* at, std::size_t count) {
    const auto byte = [at](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(at[i])} << 8 * i; };
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    if (count >= 8) {
        low = load<std::uint64_t>(at);
        high = load<std::uint64_t>(at + count - 8) >> 8 >> 8 * (15 - count);
    } else if (count >= 4) {
        low = load<std::uint32_t>(at) | std::uint64_t{load<std::uint32_t>(at + count - 4)} >> 8 * (8 - count) << 32;
    } else if (count != 0) {
        low = byte(0) | byte(count / 2) | byte(count - 1);
    }
    return _mm_set_epi64x(static_cast<std::int64_t>(high), static_cast<std::int64_t>(low));
}

/** Loads the 16 bytes from `at` on or, where `readable` does not permit that, those up to `end`, and zeros. */
[[gnu::always_inline]] inline __m128i loadBlock(const char* at, const char* end, const char* readable) {
    return readable - at >= 16 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(at))
                               : loadShort(at, static_cast<std::size_t>(end - at));
}
#endif

/** The first of the given characters in [begin, end), or `end`. The bytes up to `readable` may be loaded too. */
template <char... kWanted>
[[gnu::always_inline]] inline const char* findAny(const char* begin, const char* end,
                                                  [[maybe_unused]] const char* readable) {
#ifdef __SSE2__
    for (; begin < end; begin += 16) {
        const __m128i bytes = loadBlock(begin, end, readable);
        __m128i hits = _mm_setzero_si128();
        ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(kWanted)))), ...);
        const int mask = _mm_movemask_epi8(hits);
        if (mask != 0) {
            const char* const at = begin + __builtin_ctz(static_cast<unsigned>(mask));
            return at < end ? at : end;
        }
    }
    return end;
#else
    while (begin != end && ((*begin != kWanted) && ...)) {
        ++begin;
    }
    return begin;
#endif
}

/** The first of the given characters in [begin, end), or `end`. */
template <char... kWanted>
const char* findAny(const char* begin, const char* end) {
    return findAny<kWanted...>(begin, end, end);
}

} // namespace KxBytes
