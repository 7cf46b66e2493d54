#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** A header line that the library drops from a message. */
struct FaultyLine {
    std::size_t line = 0; ///< Number of the line in the message, 1 for the start line.
    std::string text;     ///< The beginning of the line, with control characters as \xNN.
    std::string why;      ///< The library's error text.

    /** Returns the first such line of the message, or nothing if all can be read. */
    static std::optional<FaultyLine> sFind(std::string_view message);
};
