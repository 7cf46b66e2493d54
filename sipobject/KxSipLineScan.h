#pragma once

#include "util/KxBytes.h"

/** The first colon of a header line and the end of the line, found in one pass over its bytes. */
class KxSipLineScan {
public:
    /** @param readable the end of the bytes that may be loaded. */
    [[gnu::always_inline]] KxSipLineScan(const char* begin, const char* readable) {
#ifdef __SSE2__
        if (readable - begin < kBlock) [[unlikely]] {
            return;
        }
        const char* const last = readable - kBlock; // where the last block begins; it may overlap the one before it
        const char* at = begin;
        Hits hits(at);
        while ((hits.colons | hits.stops) == 0) {
            if (at == last) [[unlikely]] {
                return;
            }
            at = last - at < kBlock ? last : at + kBlock;
            hits = Hits(at);
        }
        const unsigned beforeStops = (hits.stops - 1) & ~hits.stops;
        if ((hits.colons & beforeStops) == 0) [[unlikely]] {
            return;
        }
        m_colon = at + static_cast<unsigned>(__builtin_ctz(hits.colons));
        while (hits.stops == 0) {
            if (at == last) [[unlikely]] {
                return;
            }
            at = last - at < kBlock ? last : at + kBlock;
            hits.stops = Hits::sStops(sBlock(at));
        }
        m_stop = at + static_cast<unsigned>(__builtin_ctz(hits.stops));
#else
        const char* at = begin;
        while (at != readable && *at != ':' && !sIsStop(*at)) {
            ++at;
        }
        if (at == readable || *at != ':') {
            return;
        }
        m_colon = at;
        while (at != readable && !sIsStop(*at)) {
            ++at;
        }
        m_stop = at == readable ? nullptr : at;
#endif
    }

    /** The first colon. Valid if there is a stop. */
    const char* colon() const {
        return m_colon;
    }
    /** The first control character up to CR after the colon: a line break, if the line is as usual. Null if such a
        character comes before the first colon, if there is none, or if there are less than 16 bytes. */
    const char* stop() const {
        return m_stop;
    }

private:
#ifdef __SSE2__
    static constexpr std::ptrdiff_t kBlock = 16;

    static __m128i sBlock(const char* at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    }

    /** One bit for each colon, and for each stop, of a block. */
    struct Hits {
        explicit Hits(const char* at) : Hits(sBlock(at)) {}
        explicit Hits(__m128i bytes)
            : colons(static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(':'))))),
              stops(sStops(bytes)) {}
        static unsigned sStops(__m128i bytes) {
            const __m128i are = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8('\r')), bytes);
            return static_cast<unsigned>(_mm_movemask_epi8(are));
        }
        unsigned colons;
        unsigned stops;
    };
#else
    static bool sIsStop(char c) {
        return static_cast<unsigned char>(c) <= '\r';
    }
#endif

    const char* m_colon = nullptr;
    const char* m_stop = nullptr;
};
