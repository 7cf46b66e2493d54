#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** A header line that the library drops from a message. */
struct FaultyLine {
    std::size_t line = 0; ///< Of the message, 1 for the start line.
    std::string text;     ///< Its beginning; control characters as \xNN.
    std::string why;      ///< What the library says of it.

    /** The first one of the message; nothing where all can be read. */
    static std::optional<FaultyLine> sFind(std::string_view message);
};
