#include "tests/util/Streams.h"

#include "util/KxByteScan.h"
#include "util/KxCharSet.h"

namespace {

constexpr KxCharSet kFew(",;\r\n");
constexpr KxCharSet kManyRanges(" \t\r\n\\\"()<>@,;:/[]?={}");

/** Sixteen bytes at once find what a loop finds, for every alignment and end before the readable bytes' end. */
void expectFound(const std::string& text) {
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
        ASSERT_EQ((KxByteScan<';', '\r'>(begin, end, readable).next()), either);
    }
}

} // namespace

TEST(ByteScanTest, FindsWhatALoopFinds) {
    for (std::size_t length = 0; length <= 50; ++length)
        for (const char other : {'a', '!', '*', '\xac', '\0'}) // alike to wanted ones in some bits
            for (std::size_t place = 0; place <= length; ++place) {
                std::string text(length, other);
                if (place < length)
                    text[place] = ';';
                expectFound(text);
            }
}
