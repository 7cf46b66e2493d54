#include "util/KxLineEnd.h"

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
