#pragma once

#include <functional>
#include <ostream>
#include <string>

/** Writes a file with `write`. The file gets its name when it is complete; until then, a file of this name is unchanged.
    What is no regular file (a FIFO, a device) is written directly. Throws std::system_error; nothing is left then. */
void writeWholeFile(const std::string& name, const std::function<void(std::ostream&)>& write);
