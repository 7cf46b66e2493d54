#pragma once

#include <string>
#include <system_error>

/** A file, read whole. */
struct InputFile {
    std::string name;
    std::string bytes;

    /** Reads the file, or standard input where the name is "-". Throws std::system_error. */
    static InputFile sRead(const std::string& name);
};

/** Tells on standard error that the file could not be read. */
void complainOfFile(const std::string& name, const std::system_error& why);
