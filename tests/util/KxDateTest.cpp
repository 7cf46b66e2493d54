#include "util/KxDate.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxTime.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

static std::string textOf(const KxDate& date) {
    char buffer[64];
    const std::size_t length = date.getKxDate(buffer, sizeof buffer);
    EXPECT_EQ(buffer[length], '\0');
    KxByteArrayOutputStream out;
    date.getKxDate(out);
    EXPECT_EQ(out.view(), std::string_view(buffer, length));
    return std::string(buffer, length);
}

TEST(KxDateTest, ReadsDatesAndWritesThemAsRfc1123) {
    const std::tuple<const char*, std::int64_t, const char*> rows[] = {
        {"Thursday, 01-DECEMBER-94 16:00:00 Z", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"Thu Dec  1 16:00:00 1994", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"  thu,1\tdeC 1994 16:00  utc ", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"Mon, 01 Dec 1994 16:00:00 GMT", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"}, // it was a Thursday
        {"31 Dec 1969 23:59:59 GMT", -1, "Wed, 31 Dec 1969 23:59:59 GMT"},
        {"30 Jun 2015 23:59:60 GMT", 1435708800, "Wed, 01 Jul 2015 00:00:00 GMT"},
        {"01 Jan 0001", -62135596800, "Mon, 01 Jan 0001 00:00:00 GMT"},
        {"31 Dec 9999 23:59:60", 253402300799, "Fri, 31 Dec 9999 23:59:59 GMT"},
        {"1-Jan-49", 2493072000, "Fri, 01 Jan 2049 00:00:00 GMT"},
        {"1-Jan-50", -631152000, "Sun, 01 Jan 1950 00:00:00 GMT"},
    };
    for (const auto& [text, seconds, written] : rows) {
        KxDate date("stale");
        EXPECT_TRUE(date.constructKxDate(text)) << text;
        EXPECT_EQ(date.getSeconds(), seconds) << text;
        EXPECT_EQ(textOf(date), written);
    }
    EXPECT_EQ(textOf(KxDate::sFromSeconds(INT64_MAX)), "Fri, 31 Dec 9999 23:59:59 GMT");
    EXPECT_EQ(textOf(KxDate::sFromSeconds(INT64_MIN)), "Mon, 01 Jan 0001 00:00:00 GMT");
}

TEST(KxDateTest, WhatIsNoDateIsKeptAsItStands) {
    for (const char* const text :
         {"", "Th, 01 Dec 1994", "01 Decembers 1994", "29 Feb 1900", "001 Dec 1994", "01 Dec 0000", "01 Dec 994",
          "01 Dec 19940", "01 Dec -1994", "01 Dec 1994 24:00:00", "01 Dec 1994 16:60", "01 Dec 1994 16:00:61",
          "01 Dec 1994 16", "01 Dec 1994 16:", "01 Dec 1994 EST", "01 Dec 1994 GMT GMT", "Dec 1 16:00 1994 17:00"}) {
        KxDate date("01 Dec 1994");
        EXPECT_FALSE(date.constructKxDate(text)) << text;
        EXPECT_FALSE(date.isValid()) << text;
        EXPECT_EQ(textOf(date), text);
        EXPECT_EQ(date.getDelta(), 0);
    }
    EXPECT_FALSE(KxDate(static_cast<const char*>(nullptr)).isValid());
}

TEST(KxDateTest, NeverCutsTheText) {
    for (const KxDate& date : {KxDate("01 Dec 1994"), KxDate(std::string(29, 'x'))}) {
        char buffer[30] = "?";
        EXPECT_EQ(date.getKxDate(buffer, 29), 0U);
        EXPECT_EQ(buffer[0], '\0');
        EXPECT_EQ(date.getKxDate(nullptr, 0), 0U);
        EXPECT_EQ(date.getKxDate(buffer, 30), 29U);
    }
}

TEST(KxDateTest, ComparesAndCountsFromNow) {
    EXPECT_LT(KxDate("x"), KxDate::sFromSeconds(INT64_MIN));
    EXPECT_LT(KxDate(), KxDate("x"));
    EXPECT_NE(KxDate("x"), KxDate("y"));
    EXPECT_LT(KxDate::sFromSeconds(-1), KxDate::sFromSeconds(0));
    const std::int64_t now = KxTime::sGetCurrentTime().m_microseconds / 1000000;
    EXPECT_NEAR(static_cast<double>(KxDate::sFromSeconds(now + 3600).getDelta()), 3600, 60);
}
