#include "tests/util/Streams.h"

#include "util/KxHexEncoding.h"
#include "util/MD5.h"

static std::string hex(const MD5::Raw& raw) {
    std::string text(32, ' ');
    EXPECT_EQ(KxHexEncoding::toHex(raw.view(), text.data()), text.data() + text.size());
    return text;
}

TEST(MD5Test, DigestsKnownTexts) {
    const std::pair<std::string, const char*> rows[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"}, // RFC 1321 section A.5
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
        // the last length whose padding fits the block, the first that needs another, and a whole block
        {std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"},
        {std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
        {std::string(64, 'a'), "014842d480b571495a4a0363793f7367"},
    };
    for (const auto& [text, digest] : rows) {
        EXPECT_EQ(hex(MD5::digestOf(HeapText(text).view())), digest) << text.size();
        EXPECT_EQ(KxHexEncoding::toHex(MD5::digest(KxByteArray::sCreate(text.c_str()))), digest);
    }
    EXPECT_EQ(KxHexEncoding::toHex(MD5::digest(nullptr)), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(MD5Test, PiecesGiveTheDigestOfTheWholeAndAnObjectBeginsAnew) {
    const std::string text = Dice().text("abcdef\0\xFF", 200);
    const std::string whole = hex(MD5::digestOf(text));
    MD5 sum;
    for (std::size_t first = 0; first <= 130; ++first) {
        sum.update(std::string_view(text).substr(0, first));
        sum.update(std::string_view(text).substr(first, 65));
        sum.update("");
        sum.update(std::string_view(text).substr(first + 65));
        EXPECT_EQ(hex(sum.finish()), whole) << first;
    }
}

TEST(KxHexEncodingTest, EveryByteGoesOutAndComesBackAndWhatIsNoDigitCountsAsZero) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    const KxString all = KxHexEncoding::toHex(KxByteArray::sCreate(bytes.size(), bytes.data()));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const KxString digits = KxHexEncoding::toHex(KxByteArray::sCreate(1, &bytes[i]));
        ASSERT_EQ(digits, all.substr(2 * i, 2)); // one at a time, and sixteen
        EXPECT_EQ(KxHexEncoding::fromHex(digits[0], digits[1]), bytes[i]);
        EXPECT_EQ(KxHexEncoding::fromHex(KxAscii::toUpper(digits[0]), digits[1]), bytes[i]);
    }
    EXPECT_EQ(KxHexEncoding::toHex(KxByteArray::sCreate(3, "\x00\xAB\xff")), "00abff");
    EXPECT_EQ(KxHexEncoding::toHex(nullptr), "");
    for (const char c : {'g', 'G', '@', '`', '/', ':', '\0', '\xC1'}) {
        EXPECT_EQ(KxHexEncoding::fromHex(c, '7'), '\x07');
        EXPECT_EQ(KxHexEncoding::fromHex('3', c), '\x30');
    }
}
