#pragma once

#include <string>
#include <string_view>

/** Returns the text with its control characters as \xNN, so that a message can't control the terminal. */
std::string printable(std::string_view text);
