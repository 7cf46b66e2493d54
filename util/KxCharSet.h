#pragma once

#include "util/KxAscii.h"
#include "util/KxBytes.h"

#include <array>
#include <string_view>

/** A set of characters in a table. It is made once, at compile time if the characters are known. */
class KxCharSet {
public:
    constexpr explicit KxCharSet(std::string_view characters) {
        for (const char c : characters) {
            m_has[static_cast<unsigned char>(c)] = true;
        }
        cover();
    }

    constexpr bool contains(char c) const { return m_has[static_cast<unsigned char>(c)]; }

    constexpr KxCharSet operator|(const KxCharSet& other) const {
        KxCharSet both(*this);
        for (std::size_t i = 0; i < both.m_has.size(); ++i) {
            both.m_has[i] = both.m_has[i] || other.m_has[i];
        }
        both.cover();
        return both;
    }

    /** The first character of [begin, end) that is in the set, or `end`. */
    [[gnu::always_inline]] constexpr const char* find(const char* begin, const char* end) const {
        return find(begin, end, end);
    }

    /** As above; the bytes from `end` to `readable` may be loaded too. */
    [[gnu::always_inline]] constexpr const char* find(const char* begin, const char* end,
                                                      [[maybe_unused]] const char* readable) const {
#ifdef __SSE2__
        if (!std::is_constant_evaluated() && __builtin_constant_p(m_rangeCount) && m_rangeCount != 0) {
            for (; begin < end; begin += 16) {
                const __m128i bytes = KxBytes::loadBlock(begin, end, readable);
                for (unsigned hits = candidates(bytes); hits != 0; hits &= hits - 1) {
                    const char* const at = begin + __builtin_ctz(hits);
                    if (at >= end) {
                        return end;
                    }
                    if (contains(*at)) {
                        return at;
                    }
                }
            }
            return end;
        }
#endif
        while (begin != end && !contains(*begin)) {
            ++begin;
        }
        return begin;
    }

private:
    struct Range {
        unsigned char first;
        unsigned char last;
    };

    /** Whether `c` is frequent in text. A range may contain a character that is not in the set only if it is not
        frequent. */
    static constexpr bool isCommon(unsigned c) {
        const char letter = static_cast<char>(c);
        return KxAscii::isAlpha(letter) || KxAscii::isDigit(letter) || letter == '-' || letter == '.' ||
               letter == '_' || c >= 0x80;
    }

    /** Covers the set with a few ranges, if that is possible. */
    constexpr void cover() {
        m_rangeCount = 0;
        bool apart = false; // whether a common character is between the last range and `c`
        for (unsigned c = 0; c < m_has.size(); ++c) {
            if (m_has[c] && (apart || m_rangeCount == 0)) {
                if (m_rangeCount == m_ranges.size()) {
                    m_rangeCount = 0;
                    return;
                }
                m_ranges[m_rangeCount++] = {static_cast<unsigned char>(apart ? c : 0), static_cast<unsigned char>(c)};
                apart = false;
            } else if (m_has[c]) {
                m_ranges[m_rangeCount - 1].last = static_cast<unsigned char>(c);
            } else {
                apart = apart || isCommon(c);
            }
        }
    }

#ifdef __SSE2__
    /** One bit for each of 16 bytes, set if the byte may be in the set. To be inlined where the set is known. */
    [[gnu::always_inline]] unsigned candidates(__m128i bytes) const {
        const __m128i hits =
            addRange<4>(bytes, addRange<3>(bytes, addRange<2>(bytes, addRange<1>(bytes, inRange(bytes, m_ranges[0])))));
        return static_cast<unsigned>(_mm_movemask_epi8(hits));
    }
    template <std::size_t kIndex>
    [[gnu::always_inline]] __m128i addRange(__m128i bytes, __m128i hits) const {
        return kIndex < m_rangeCount ? _mm_or_si128(hits, inRange(bytes, m_ranges[kIndex])) : hits;
    }
    [[gnu::always_inline]] static __m128i inRange(__m128i bytes, Range range) {
        if (range.first == range.last) {
            return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(static_cast<char>(range.first)));
        }
        const __m128i from = _mm_sub_epi8(bytes, _mm_set1_epi8(static_cast<char>(range.first)));
        const __m128i span = _mm_set1_epi8(static_cast<char>(range.last - range.first));
        return _mm_cmpeq_epi8(_mm_min_epu8(from, span), from);
    }
#endif

    std::array<bool, 256> m_has{};
    std::array<Range, 5> m_ranges{};
    std::size_t m_rangeCount = 0; ///< 0 if the ranges do not cover the set.
};
