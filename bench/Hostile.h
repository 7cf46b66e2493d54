#pragma once

#include "bench/BenchSupport.h"

#include <cstddef>
#include <string>
#include <string_view>

inline constexpr std::size_t kHostileSize = 65536;

/** Returns `first`, then `piece` repeated until the text has about the size, then `last`. A "#" in the piece is
    replaced by the number of the repetition, so that the pieces differ. */
inline std::string filled(std::string_view first, std::string_view piece, std::string_view last,
                          std::size_t size = kHostileSize) {
    std::string text(first);
    const std::size_t mark = piece.find('#');
    for (std::size_t i = 1; text.size() + piece.size() + last.size() < size; ++i) {
        if (mark == std::string_view::npos) {
            text.append(piece);
        } else {
            text.append(piece.substr(0, mark)).append(std::to_string(i)).append(piece.substr(mark + 1));
        }
    }
    return text.append(last);
}
