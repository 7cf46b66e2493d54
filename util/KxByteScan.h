#pragma once

#include "util/KxBytes.h"

/** Finds the places in [begin, end) that hold a character up to kUpTo or one from kFrom to kTo; examines sixteen bytes
    at a time. */
template <unsigned char kUpTo, unsigned char kFrom, unsigned char kTo>
class KxByteScan {
public:
    /** The bytes from `end` up to `readable` may be loaded too. */
    KxByteScan(const char* begin, const char* end, const char* readable)
        : m_block(begin), m_end(end), m_readable(readable) {
        look();
    }

    /** The next such place, or `end`. Must not be called again after it returned `end`. */
    [[gnu::always_inline]] const char* next() {
        while (m_hits == 0) {
            if (m_end - m_block <= kBlock) {
                return m_end;
            }
            m_block += kBlock;
            look();
        }
        const char* const at = m_block + __builtin_ctz(m_hits);
        m_hits &= m_hits - 1;
        return at < m_end ? at : m_end;
    }

    /** Continues at `at`, which is between the last place found and `end`. */
    void skipTo(const char* at) {
        m_block = at;
        look();
    }

private:
    static constexpr std::ptrdiff_t kBlock = 16;

#ifdef __SSE2__
    void look() {
        const __m128i bytes = KxBytes::loadBlock(m_block, m_end, m_readable);
        const __m128i from = _mm_sub_epi8(bytes, _mm_set1_epi8(static_cast<char>(kFrom)));
        const __m128i isLow = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(static_cast<char>(kUpTo))), bytes);
        const __m128i isBetween =
            _mm_cmpeq_epi8(_mm_min_epu8(from, _mm_set1_epi8(static_cast<char>(kTo - kFrom))), from);
        m_hits = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(isLow, isBetween)));
    }
#else
    void look() {
        m_hits = 0;
        for (std::ptrdiff_t i = 0; i < kBlock && i < m_end - m_block; ++i) {
            const auto c = static_cast<unsigned char>(m_block[i]);
            m_hits |= c <= kUpTo || (c >= kFrom && c <= kTo) ? 1U << i : 0U;
        }
    }
#endif

    const char* m_block;
    const char* m_end;
    const char* m_readable;
    unsigned m_hits = 0; ///< One bit for each place in the block that next() has not yet returned.
};
