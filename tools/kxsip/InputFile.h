#pragma once

#include <string>

/** A file, read whole. */
struct InputFile {
    std::string name;
    std::string bytes;

    /** Reads the file, or standard input where the name is "-". Throws std::system_error. */
    static InputFile sRead(const std::string& name);
};
