#pragma once

#include "util/KxString.h"

#include <string>
#include <string_view>

/** Text for a start line or a URI. All CRs are removed from it, since a peer may read a stray CR as a line end. */
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
