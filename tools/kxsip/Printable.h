#pragma once

#include <string>
#include <string_view>

/** The text with its control characters as \xNN, so that a message can't steer the terminal. */
std::string printable(std::string_view text);
