#pragma once

#include <ostream>
#include <string_view>

/** What is known of standard output if it is a terminal. */
namespace Terminal {

bool isOutput();
/** Writes bytes of a message to standard output: on a terminal, with all but line ends as `printable` shows them, so that
    the message can't control it. */
void write(std::ostream& out, std::string_view bytes);

} // namespace Terminal
