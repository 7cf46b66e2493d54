#include "tests/util/Streams.h"

#include "util/KxByteScan.h"
#include "util/KxCharSet.h"

constexpr KxCharSet kFew(",;\r\n");
constexpr KxCharSet kManyRanges(" \t\r\n\\\"()<>@,;:/[]?={}");

/** Reading 16 bytes at a time finds what a loop finds, for any alignment and distance to the last readable byte. */
static void expectFound(const std::string& text) {
    const HeapText block(text);
    const char* const readable = block.view().data() + text.size();
    for (std::size_t cut = 0; cut <= text.size(); cut = cut < 3 ? cut + 1 : cut + 7) {
        const char* const begin = block.view().data() + cut / 2;
        const char* const end = readable - (cut - cut / 2);
        const auto found = [&](auto wanted) { return std::find_if(begin, end, wanted); };
        ASSERT_EQ(kFew.find(begin, end, readable), found([](char c) { return kFew.contains(c); }));
        ASSERT_EQ(kManyRanges.find(begin, end, readable), found([](char c) { return kManyRanges.contains(c); }));
        const char* const either = found([](char c) { return c == ';' || c == '\r'; });
        ASSERT_EQ((KxBytes::findAny<';', '\r'>(begin, end, readable)), either);
        ASSERT_EQ((KxByteScan<'!', ';', '>'>(begin, end, readable).next()),
                  found([](unsigned char c) { return c <= '!' || (c >= ';' && c <= '>'); }));
    }
}

TEST(ByteScanTest, FindsWhatALoopFinds) {
    for (std::size_t length = 0; length <= 50; ++length) {
        for (const char other : {'a', '!', '*', '\xac', '\0'}) { // share some bits with the wanted ones
            for (std::size_t place = 0; place <= length; ++place) {
                std::string text(length, other);
                if (place < length) {
                    text[place] = ';';
                }
                expectFound(text);
            }
        }
    }
}
