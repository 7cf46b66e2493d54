#include "core/FastString.h"
#include "core/MemAccounts.h"
#include "core/MemAllocatorFaults.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>

using Oskan::FastString;
using Oskan::MemAccounts;

TEST(FastStringTest, GrowsAtEveryBoundaryHoweverItIsFilled) {
    const auto live = [] { return MemAccounts::sGetUsage("FastStringAccount").liveObjects; };
    const auto before = live();
    for (const std::size_t length : {0U, 1U, 7U, 8U, 9U, 16U, 17U, 33U, 5000U}) {
        std::string expected;
        FastString<8> byChar;
        for (std::size_t i = 0; i < length; ++i) {
            byChar.append(expected.append(1, static_cast<char>('a' + i % 26)).back());
        }
        FastString<8> inParts;
        inParts.append(expected.substr(0, length / 2));
        inParts.append(expected.data() + length / 2, length - length / 2);
        EXPECT_EQ(byChar.view(), expected);
        EXPECT_EQ(inParts.view(), expected);
        EXPECT_EQ(inParts.c_str(), expected);
        EXPECT_EQ(live() - before, length > 8 ? 2 : 0) << length;
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
    for (int i = 0; i < 4; ++i) { // in the object, from there to the heap, and on the heap
        text.append(text.data() + 1, text.length() - 1);
    }
    EXPECT_EQ(text.length(), 97U);
    EXPECT_EQ(text.view().substr(0, 14), "abcdefgbcdefgb");
}

TEST(FastStringTest, StaysWhatItWasWhenThereIsNoMemory) {
    FastString<4> text;
    text.append("abcd");
    Oskan::MemAllocatorFaults::sFailAfter(1);
    EXPECT_THROW(text.append('e'), std::bad_alloc);
    const volatile std::size_t immense = PTRDIFF_MAX; // volatile, so that the compiler does not warn
    EXPECT_THROW(text.append("x", immense), std::bad_alloc);
    EXPECT_STREQ(text.c_str(), "abcd");
    text.append('e');
    EXPECT_STREQ(text.c_str(), "abcde");
}
