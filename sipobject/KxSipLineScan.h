#pragma once

#include "util/KxBytes.h"

/** The first colon of a header line and the end of the line, found in one pass over its bytes. */
struct KxSipLineScan {
    const char* colon = nullptr;
    const char* stop = nullptr; ///< The first control character up to CR after the colon: a line break, if the line is
                                ///< as usual. Null if there is a control character before the colon, or none was found.

    /** @param readable the end of the bytes that may be loaded. */
    [[gnu::always_inline]] KxSipLineScan(const char* begin, const char* readable) {
#ifdef __SSE2__
        unsigned colons = 0;
        unsigned stops = 0;
        const char* at = begin;
        while (look(begin, at, readable, colons, stops) && (colons | stops) == 0) {
            at += kBlock;
        }
        if (colons == 0 || (stops & (colons ^ (colons - 1))) != 0) {
            return;
        }
        colon = at + __builtin_ctz(colons);
        while (stops == 0) {
            at += kBlock;
            if (!look(begin, at, readable, colons, stops)) {
                return;
            }
        }
        stop = at + __builtin_ctz(stops);
#else
        const auto isStop = [](char c) { return static_cast<unsigned char>(c) <= '\r'; };
        const char* at = begin;
        while (at != readable && *at != ':' && !isStop(*at)) {
            ++at;
        }
        if (at == readable || *at != ':') {
            return;
        }
        colon = at;
        while (at != readable && !isStop(*at)) {
            ++at;
        }
        stop = at == readable ? nullptr : at;
#endif
    }

#ifdef __SSE2__
private:
    static constexpr std::ptrdiff_t kBlock = 16;

    /** Sets one bit for each of the 16 bytes at `at` that is a colon or a stop. Returns false at the end of the bytes.
        The last block is loaded from before `at`, if it can be. */
    [[gnu::always_inline]] static bool look(const char* begin, const char* at, const char* readable, unsigned& colons,
                                            unsigned& stops) {
        int before = 0;
        if (readable - at < kBlock) [[unlikely]] {
            if (readable - begin < kBlock || at >= readable) {
                return false;
            }
            before = static_cast<int>(kBlock - (readable - at));
        }
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at - before));
        const __m128i isColon = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(':'));
        const __m128i isStop = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8('\r')), bytes);
        colons = static_cast<unsigned>(_mm_movemask_epi8(isColon)) >> before;
        stops = static_cast<unsigned>(_mm_movemask_epi8(isStop)) >> before;
        return true;
    }
#endif
};
