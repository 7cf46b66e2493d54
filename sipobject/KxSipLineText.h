#pragma once

#include "util/KxString.h"

#include <string>
#include <string_view>

/** Text that goes into a start line or a URI. A CR in it that ends no line would be a line's end to some peers, so none is
    kept. */
struct KxSipLineText {
    static KxString sOf(std::string_view text) {
        return text.find('\r') == std::string_view::npos ? KxString(text) : sWithoutReturns(text);
    }
    [[gnu::cold, gnu::noinline]] static KxString sWithoutReturns(std::string_view text) {
        std::string kept(text);
        std::erase(kept, '\r');
        return KxString(kept);
    }
};
