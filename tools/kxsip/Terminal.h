#pragma once

#include <cstddef>
#include <optional>
#include <ostream>
#include <string_view>

/** What is known of standard output if it is a terminal. */
namespace Terminal {

bool isOutput();
/** Returns the number of columns; nothing if standard output is no terminal, or does not know. */
std::optional<std::size_t> width();
/** Writes bytes of a message to standard output: on a terminal, with all but line ends as `printable` shows them, so that
    the message can't control it. */
void write(std::ostream& out, std::string_view bytes);

} // namespace Terminal
