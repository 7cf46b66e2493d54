// Runs a fuzz target over stored inputs: every file of the folders (or every file) given as arguments; in the RFC
// grammar if --grammar=rfc comes before them.

#include "fuzz/StartUp.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

/** Passes the input in a block of exactly its size, so that a sanitizer sees an overrun by one byte. */
bool replayFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
        return false;
    }
    const std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const auto block = std::make_unique<std::uint8_t[]>(content.size());
    content.copy(reinterpret_cast<char*>(block.get()), content.size());
    LLVMFuzzerTestOneInput(block.get(), content.size());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    startUp(argc, argv);
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path argument(argv[i]);
        if (!std::filesystem::is_directory(argument)) {
            if (!replayFile(argument)) {
                return 1;
            }
            ++replayed;
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argument)) {
            if (entry.is_regular_file()) {
                if (!replayFile(entry.path())) {
                    return 1;
                }
                ++replayed;
            }
        }
    }
    std::printf("%zu inputs replayed\n", replayed);
    return replayed == 0 ? 1 : 0;
}
