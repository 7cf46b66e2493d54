// Prints what each scan of bytes finds in random texts. The test compiles it with and without the instructions for
// sixteen bytes at a time, and compares what the two programs print.

#include "sipobject/KxSipLineScan.h"
#include "util/KxByteScan.h"
#include "util/KxCharSet.h"

#include <cstdio>
#include <memory>
#include <random>

namespace {

constexpr KxCharSet kSeparators("<>@,;: \r\n\t\"");
constexpr KxCharSet kTwo("=,");

/** A block of exactly the text's size. Most bytes are of those that the scans look for, or next to them. */
std::unique_ptr<char[]> randomText(std::mt19937& random, std::size_t size) {
    constexpr std::string_view kNear("\0\t\n\r !\"#+,-:;<=>?@AZaz\x7F\x80\xFF", 26);
    auto text = std::make_unique<char[]>(size);
    const unsigned share = random() % 16;
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = random() % 16 < share ? kNear[random() % kNear.size()] : static_cast<char>(random());
    }
    return text;
}

void print(const char* begin, const char* end, const char* readable) {
    const auto place = [begin](const char* at) { std::printf(" %td", at == nullptr ? -1 : at - begin); };
    place(KxBytes::findAny<'"', ',', '=', '\n', ' '>(begin, end, readable));
    place(KxBytes::findAny<'\0'>(begin, end));
    place(kSeparators.find(begin, end, readable));
    place(kTwo.find(begin, end));
    KxByteScan<' ', '<', '>'> scan(begin, end, readable);
    for (const char* at = scan.next(); at != end; at = scan.next()) {
        place(at);
        if (*at == '<') {
            scan.skipTo(at + 1);
        }
    }
    if (readable - begin >= 16) { // shorter lines are left to the road that looks at every byte
        const KxSipLineScan line(begin, readable);
        place(line.stop());
        place(line.stop() == nullptr ? nullptr : line.colon());
    }
    std::printf("\n");
}

} // namespace

int main() {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::size_t size = random() % 80;
        const std::unique_ptr<char[]> text = randomText(random, size);
        const char* const begin = text.get() + (size == 0 ? 0 : random() % size);
        const char* const readable = text.get() + size;
        print(begin, begin + random() % static_cast<unsigned long>(readable - begin + 1), readable);
    }
    return 0;
}
