#pragma once

#include <string>
#include <string_view>

/** Returns the text for a terminal, which a message must not control: bytes that are not UTF-8, control characters and
    those that change the direction of text are written as \xNN. */
std::string printable(std::string_view text);
