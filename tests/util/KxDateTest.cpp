#include "util/KxDate.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxTime.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

std::string textOf(const KxDate& date) {
    char buffer[64];
    const std::size_t length = date.getKxDate(buffer, sizeof buffer);
    EXPECT_EQ(buffer[length], '\0');
    KxByteArrayOutputStream out;
    date.getKxDate(out);
    EXPECT_EQ(out.view(), std::string_view(buffer, length));
    return std::string(buffer, length);
}

} // namespace

TEST(KxDateTest, ReadsDatesAndWritesThemAsRfc1123) {
    const struct {
        const char* text;
        std::int64_t seconds;
        const char* written;
    } rows[] = {
        {"Thu, 01 Dec 1994 16:00:00 GMT", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"Thursday, 01-Dec-94 16:00:00 GMT", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"Thu Dec  1 16:00:00 1994", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"  thu,1\tdeC 1994 16:00  utc ", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"1 DECEMBER 1994 16:00:00 Z", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"},
        {"Mon, 01 Dec 1994 16:00:00 GMT", 786297600, "Thu, 01 Dec 1994 16:00:00 GMT"}, // it was a Thursday
        {"12 Dec 1994", 787190400, "Mon, 12 Dec 1994 00:00:00 GMT"},
        {"1 Jan 1970 00:00:00 GMT", 0, "Thu, 01 Jan 1970 00:00:00 GMT"},
        {"31 Dec 1969 23:59:59 GMT", -1, "Wed, 31 Dec 1969 23:59:59 GMT"},
        {"29 Feb 2000", 951782400, "Tue, 29 Feb 2000 00:00:00 GMT"},
        {"29 Feb 1600 23:59:59", -11670912001, "Tue, 29 Feb 1600 23:59:59 GMT"},
        {"30 Jun 2015 23:59:60 GMT", 1435708800, "Wed, 01 Jul 2015 00:00:00 GMT"},
        {"01 Jan 0001", -62135596800, "Mon, 01 Jan 0001 00:00:00 GMT"},
        {"31 Dec 9999 23:59:60", 253402300799, "Fri, 31 Dec 9999 23:59:59 GMT"},
        {"1-Jan-49", 2493072000, "Fri, 01 Jan 2049 00:00:00 GMT"},
        {"1-Jan-50", -631152000, "Sun, 01 Jan 1950 00:00:00 GMT"},
    };
    for (const auto& row : rows) {
        KxDate date("stale");
        EXPECT_TRUE(date.constructKxDate(row.text)) << row.text;
        EXPECT_EQ(date.getSeconds(), row.seconds) << row.text;
        EXPECT_EQ(textOf(date), row.written);
        EXPECT_EQ(date, KxDate::sFromSeconds(row.seconds));
    }
}

TEST(KxDateTest, WhatIsNoDateIsKeptAsItStands) {
    const char* const texts[] = {"",
                                 "3600",
                                 "Thu",
                                 "Thu, 01 Dec",
                                 "Th, 01 Dec 1994",
                                 "01 Decembers 1994",
                                 "00 Dec 1994",
                                 "31 Nov 1994",
                                 "29 Feb 1900",
                                 "001 Dec 1994",
                                 "01 Dec 0000",
                                 "01 Dec 994",
                                 "01 Dec 19940",
                                 "99999999999999999999 Dec 1994",
                                 "01 Dec -1994",
                                 "1994-12-01",
                                 "01 Dec 1994 24:00:00",
                                 "01 Dec 1994 16:00:61",
                                 "01 Dec 1994 16",
                                 "01 Dec 1994 16:",
                                 "01 Dec 1994 -05:00",
                                 "01 Dec 1994 16:00:00 EST",
                                 "01 Dec 1994 16:00:00 +0100",
                                 "01 Dec 1994 16:00:00 GMT GMT",
                                 "Thu Dec 1 16:00:00 1994 17:00:00",
                                 "01 D\xE9t 1994"};
    for (const char* text : texts) {
        KxDate date("01 Dec 1994");
        EXPECT_FALSE(date.constructKxDate(text)) << text;
        EXPECT_FALSE(date.isValid()) << text;
        EXPECT_EQ(textOf(date), text);
        EXPECT_EQ(date.getDelta(), 0);
    }
    const std::string garbage(1000000, '1');
    KxByteArrayOutputStream out;
    KxDate(garbage).getKxDate(out);
    EXPECT_EQ(out.view(), garbage);
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

TEST(KxDateTest, SaturatesAndCompares) {
    EXPECT_EQ(textOf(KxDate::sFromSeconds(INT64_MAX)), "Fri, 31 Dec 9999 23:59:59 GMT");
    EXPECT_EQ(textOf(KxDate::sFromSeconds(INT64_MIN)), "Mon, 01 Jan 0001 00:00:00 GMT");
    EXPECT_LT(KxDate("x"), KxDate::sFromSeconds(INT64_MIN));
    EXPECT_LT(KxDate(), KxDate("x"));
    EXPECT_LT(KxDate::sFromSeconds(-1), KxDate::sFromSeconds(0));
    EXPECT_NE(KxDate("x"), KxDate("y"));
}

TEST(KxDateTest, CountsFromNow) {
    const std::int64_t now = KxTime::sGetCurrentTime().m_microseconds / 1000000;
    EXPECT_NEAR(static_cast<double>(KxDate::sNow().getSeconds()), static_cast<double>(now), 60);
    EXPECT_NEAR(static_cast<double>(KxDate::sFromSeconds(now + 3600).getDelta()), 3600, 60);
    EXPECT_LT(KxDate("01 Jan 0001").getDelta(), -62135596800);
}
