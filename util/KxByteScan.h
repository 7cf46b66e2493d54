#pragma once

#include "util/KxBytes.h"

/** Finds the places in [begin, end) that hold one of the given characters or, if kBlanks, a blank or a character below
    it in ASCII; examines sixteen bytes at a time. */
template <bool kBlanks, char... kWanted>
class KxByteScanOf {
public:
    /** The bytes from `end` up to `readable` may be loaded too. */
    KxByteScanOf(const char* begin, const char* end, const char* readable)
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

    void look() {
#ifdef __SSE2__
        if (m_readable - m_block >= kBlock) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_block));
            __m128i hits = _mm_setzero_si128();
            ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(kWanted)))), ...);
            if constexpr (kBlanks) {
                hits = _mm_or_si128(hits, _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(' ')), bytes));
            }
            m_hits = static_cast<unsigned>(_mm_movemask_epi8(hits));
            return;
        }
#endif
        lookSlowly();
    }

    [[gnu::noinline]] void lookSlowly() {
        const std::ptrdiff_t count = m_end - m_block < kBlock ? m_end - m_block : kBlock;
        m_hits = 0;
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const bool isBlank = kBlanks && static_cast<unsigned char>(m_block[i]) <= ' ';
            m_hits |= isBlank || ((m_block[i] == kWanted) || ...) ? 1U << i : 0U;
        }
    }

    const char* m_block;
    const char* m_end;
    const char* m_readable;
    unsigned m_hits = 0; ///< One bit for each place in the block that next() has not yet returned.
};

template <char... kWanted>
using KxByteScan = KxByteScanOf<false, kWanted...>;
