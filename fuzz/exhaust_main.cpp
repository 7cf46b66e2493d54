// exhaust [--grammar=rfc] NAME [FILE...]: runs the fuzz target of that name. With files, it runs the target over the text
// of each, after random bytes; without files, over every short text of an alphabet and over random texts. The first
// byte of an input tells the target what to do.

#include "fuzz/StartUp.h"
#include "tests/util/Streams.h"

#include <cstdint>
#include <fstream>
#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#ifdef KX_PLAIN_MALLOC // a sanitizer takes ten times as long
constexpr std::size_t kLonger = 0;
#else
constexpr std::size_t kLonger = 1;
#endif

static void run(char choice, const std::string& text) {
    const std::string input = choice + text;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

int main(int argc, char** argv) {
    using namespace std::string_literals;
    startUp(argc, argv);
    const std::string name = argc > 1 ? argv[1] : "";
    const std::string alphabet = name == "digest" ? "aB=\", \n" : "a=;\",\\\n";
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    Dice dice;
    for (int i = 2; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        for (std::size_t steps = 0; steps < 256; ++steps) {
            run(static_cast<char>(steps), dice.text(bytes, steps % 9 * 3) + text);
        }
    }
    if (argc > 2) {
        return 0;
    }
    for (const char choice : {'\0', '\1'}) {
        forEveryText(alphabet, name == "digest" ? 5 + kLonger : 5,
                     [choice](const std::string& text) { run(choice, text); });
        for (int i = 0; i < 2000; ++i) {
            run(choice, dice.text("aAbc==;;;,\"\"\\ \t\r\n\xC4\xE4"s + alphabet, dice(60)));
            run(2, dice.text(bytes, dice(400)));
        }
    }
}
