#include "core/FastString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>

using Oskan::FastString;
using Oskan::MemAccounts;

TEST(FastStringTest, GrowsAtEveryBoundaryHoweverItIsFilled) {
    const auto live = [] { return MemAccounts::sGetUsage("FastStringAccount").liveObjects; };
    const auto before = live();
    for (const std::size_t length : {0U, 1U, 7U, 8U, 9U, 15U, 16U, 17U, 33U, 5000U}) {
        std::string expected;
        for (std::size_t i = 0; i < length; ++i)
            expected += static_cast<char>('a' + i % 26);
        FastString<8> byChar;
        for (const char c : expected)
            byChar.append(c);
        FastString<8> atOnce;
        atOnce.append(expected);
        FastString<8> inParts;
        inParts.append(expected.data(), length / 2);
        inParts.append(expected.data() + length / 2, length - length / 2);
        for (const FastString<8>* text : {&byChar, &atOnce, &inParts}) {
            EXPECT_EQ(text->view(), expected);
            EXPECT_EQ(text->c_str()[length], '\0');
            EXPECT_EQ(text->c_str(), expected);
        }
        EXPECT_EQ(live() - before, length > 8 ? 3 : 0) << length;
        byChar.clear();
        byChar.append('x');
        EXPECT_STREQ(byChar.c_str(), "x");
        EXPECT_GE(byChar.capacity(), length);
    }
    EXPECT_EQ(live(), before);
}

TEST(FastStringTest, AppendsItself) {
    FastString<8> text;
    text.append("abcdefg");
    for (int i = 0; i < 4; ++i) // In the object, to the heap, and on the heap.
        text.append(text.data() + 1, text.length() - 1);
    EXPECT_EQ(text.length(), 97U);
    EXPECT_EQ(text.view().substr(0, 14), "abcdefgbcdefgb");
    text.append(text.data(), 0);
    EXPECT_EQ(text.length(), 97U);
}

TEST(FastStringTest, StaysWhatItWasWhenThereIsNoMemory) {
    FastString<4> text;
    text.append("abcd");
    Oskan::MemAllocatorFaults::sFailAfter(1);
    EXPECT_THROW(text.append('e'), std::bad_alloc);
    const volatile std::size_t immense = PTRDIFF_MAX; // Hidden from the compiler's own warning.
    EXPECT_THROW(text.append("x", immense), std::bad_alloc);
    EXPECT_STREQ(text.c_str(), "abcd");
    text.append('e');
    EXPECT_STREQ(text.c_str(), "abcde");
}
