#include "util/MD5.h"
#include "util/KxHexEncoding.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

std::string hex(const MD5::Raw& raw) {
    std::string text(32, ' ');
    EXPECT_EQ(KxHexEncoding::toHex(raw.view(), text.data()), text.data() + text.size());
    return text;
}

/** Of a block that ends where the text does, so that a byte read too far is caught. */
std::string hexOf(const std::string& text) {
    const auto exact = std::make_unique<char[]>(text.size());
    text.copy(exact.get(), text.size());
    return hex(MD5::digestOf({exact.get(), text.size()}));
}

std::string pattern(std::size_t length) {
    std::string bytes(length, '\0');
    for (std::size_t i = 0; i < length; ++i) {
        bytes[i] = static_cast<char>(i * 7 & 255);
    }
    return bytes;
}

} // namespace

TEST(MD5Test, DigestsKnownTexts) {
    const struct {
        std::string text;
        const char* digest;
    } rows[] = {
        // RFC 1321 section A.5
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
        // where the padding needs a block more, and where blocks end
        {std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"},
        {std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
        {std::string(63, 'a'), "b06521f39153d618550606be297466d5"},
        {std::string(64, 'a'), "014842d480b571495a4a0363793f7367"},
        {std::string(65, 'a'), "c743a45e0d2e6a95cb859adae0248435"},
        {std::string(119, 'a'), "8a7bd0732ed6a28ce75f6dabc90e1613"},
        {std::string(120, 'a'), "5f61c0ccad4cac44c75ff505e1f1e537"},
        {std::string(128, 'a'), "e510683b3f5ffe4093d021808bc6ff70"},
        {pattern(1000), "de809ff794e91b68f9e91a2b7030bcb0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(hexOf(row.text), row.digest) << row.text.size();
    }
}

TEST(MD5Test, PiecesGiveTheDigestOfTheWholeAndAnObjectBeginsAnew) {
    const std::string text = pattern(200);
    const std::string whole = hexOf(text);
    MD5 sum;
    for (std::size_t first = 0; first <= 130; ++first) {
        sum.update(std::string_view(text).substr(0, first));
        sum.update(std::string_view(text).substr(first, 65));
        sum.update("");
        sum.update(std::string_view(text).substr(first + 65));
        EXPECT_EQ(hex(sum.finish()), whole) << first;
    }
}

TEST(MD5Test, DigestsByteArraysAndNil) {
    EXPECT_EQ(KxHexEncoding::toHex(MD5::digest(KxByteArray::sCreate("abc"))), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(KxHexEncoding::toHex(MD5::digest(nullptr)), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(KxHexEncodingTest, EveryByteGoesOutAndComesBack) {
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const KxString digits = KxHexEncoding::toHex(KxByteArray::sCreate(1, &c));
        ASSERT_EQ(digits.length(), 2U);
        EXPECT_EQ(KxHexEncoding::fromHex(digits[0], digits[1]), c);
        EXPECT_EQ(KxHexEncoding::fromHex(KxAscii::toUpper(digits[0]), digits[1]), c);
    }
    EXPECT_EQ(KxHexEncoding::toHex(KxByteArray::sCreate(3, "\x00\xAB\xff")), "00abff");
    EXPECT_EQ(KxHexEncoding::toHex(nullptr), "");
    EXPECT_EQ(KxHexEncoding::toHex(KxByteArray::sCreate("")), "");
}

TEST(KxHexEncodingTest, WhatIsNoDigitCountsAsZero) {
    for (const char c : {'g', 'G', '@', '`', '/', ':', ' ', '\0', '\xC1'}) {
        EXPECT_EQ(KxHexEncoding::fromHex(c, '7'), '\x07');
        EXPECT_EQ(KxHexEncoding::fromHex('3', c), '\x30');
    }
}
