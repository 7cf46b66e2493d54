#include "util/KxLineEnd.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

const char* KxFindLineBreak(const char* begin, const char* end) {
#ifdef __SSE2__
    const __m128i cr = _mm_set1_epi8('\r');
    const __m128i lf = _mm_set1_epi8('\n');
    for (; end - begin >= 16; begin += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
        const int hits = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(bytes, cr), _mm_cmpeq_epi8(bytes, lf)));
        if (hits != 0) {
            return begin + __builtin_ctz(static_cast<unsigned>(hits));
        }
    }
#endif
    while (begin != end && *begin != '\r' && *begin != '\n') {
        ++begin;
    }
    return begin;
}

std::size_t KxUnfoldedLineEnd(std::string_view text) {
    std::size_t at = 0;
    while ((at = text.find('\n', at)) != std::string_view::npos) {
        ++at;
        if (at == text.size()) {
            return std::string_view::npos; // a continuation line may follow
        }
        if (text[at] != ' ' && text[at] != '\t') {
            return at;
        }
    }
    return std::string_view::npos;
}
