#include "util/KxByteScan.h"
#include "util/KxCharSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr KxCharSet kFew(",;\r\n");
constexpr KxCharSet kManyRanges(" \t\r\n\\\"()<>@,;:/[]?={}");
constexpr std::size_t kLongest = 50;

/** A heap block of exactly these bytes, so that a look too far is caught. */
struct Block {
    explicit Block(std::string_view text) : bytes(new char[text.size()]), size(text.size()) {
        std::copy(text.begin(), text.end(), bytes.get());
    }
    const char* at(std::size_t place) const { return bytes.get() + place; }
    std::unique_ptr<char[]> bytes;
    std::size_t size;
};

/** Texts with one wanted character, or none, at every place, the others alike to wanted ones in some bits. */
std::vector<std::string> texts() {
    std::vector<std::string> all;
    for (std::size_t length = 0; length <= kLongest; ++length) {
        for (const char other : {'a', '!', '*', '\xac', '\0'}) {
            std::string text(length, other);
            all.push_back(text);
            for (std::size_t place = 0; place < length; ++place) {
                text[place] = ';';
                all.push_back(text);
                text[place] = other;
            }
        }
    }
    return all;
}

template <class Wanted>
const char* plainly(const char* begin, const char* end, Wanted wanted) {
    return std::find_if(begin, end, wanted);
}

} // namespace

/** Sixteen bytes at once find what a loop finds, for every length, alignment and end before the readable bytes' end. */
TEST(ByteScanTest, FindsWhatALoopFinds) {
    for (const std::string& text : texts()) {
        const Block block(text);
        const char* const readable = block.at(block.size);
        for (std::size_t cut = 0; cut <= block.size; cut = cut < 3 ? cut + 1 : cut + 7) {
            const char* const begin = block.at(cut / 2);
            const char* const end = block.at(block.size - (cut - cut / 2));
            ASSERT_EQ(kFew.find(begin, end, readable), plainly(begin, end, [](char c) { return kFew.contains(c); }));
            ASSERT_EQ(kManyRanges.find(begin, end, readable),
                      plainly(begin, end, [](char c) { return kManyRanges.contains(c); }));
            ASSERT_EQ((KxBytes::findAny<';', '\r'>(begin, end, readable)),
                      plainly(begin, end, [](char c) { return c == ';' || c == '\r'; }));
        }
    }
}

TEST(ByteScanTest, WalksOverEveryPlace) {
    std::string text;
    for (std::size_t i = 0; i < 3 * kLongest; ++i) {
        text.push_back(i * i % 7 == 2 ? '=' : i % 17 == 5 ? ';' : 'x');
        const Block block(text + "=;=");
        const char* const end = block.at(text.size());
        KxByteScan<'=', ';'> near(block.at(0), end, end);
        KxByteScan<'=', ';'> far(block.at(0), end, block.at(block.size));
        const char* expected = block.at(0);
        do {
            expected = plainly(expected, end, [](char c) { return c == '=' || c == ';'; });
            ASSERT_EQ(near.next(), expected);
            ASSERT_EQ(far.next(), expected);
            if (expected != end && end - expected > 20) { // as behind a quoted stretch
                expected += 9;
                near.skipTo(expected);
                far.skipTo(expected);
            } else {
                expected += expected != end ? 1 : 0;
            }
        } while (expected != end);
    }
}
