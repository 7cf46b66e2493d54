#pragma once

#include <string>
#include <system_error>

/** The name and contents of a file. */
struct InputFile {
    std::string name;
    std::string bytes;

    /** Reads the file as it is, packed or not, or standard input if the name is "-". Throws std::system_error. */
    static InputFile sRead(const std::string& name);
};

/** Reports on standard error that the file could not be read. */
void complainOfFile(const std::string& name, const std::system_error& why);
