#include "tools/kxsip/InputFile.h"

#include "tools/kxsip/Printable.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <memory>

namespace {

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category());
}

std::string readAll(std::FILE* in) {
    std::string bytes;
    std::array<char, 65536> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), in)) {
        bytes.append(block.data(), count);
    }
    if (std::ferror(in) != 0) {
        fail();
    }
    return bytes;
}

} // namespace

InputFile InputFile::sRead(const std::string& name) {
    if (name == "-") {
        return {name, readAll(stdin)};
    }
    const std::unique_ptr<std::FILE, Closer> file(std::fopen(name.c_str(), "rb"));
    if (file == nullptr) {
        fail();
    }
    return {name, readAll(file.get())};
}

void complainOfFile(const std::string& name, const std::system_error& why) {
    std::cerr << "kxsip: cannot read " << printable(name) << ": " << why.code().message() << '\n';
}
