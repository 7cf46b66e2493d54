#include "util/KxInetAddress.h"

#include <gtest/gtest.h>

#include <string>

TEST(KxInetAddressTest, ReadsAddressesAndWritesThemShort) {
    const struct {
        std::string_view text;
        const char* written;
    } rows[] = {
        {"192.0.2.1", "192.0.2.1"},
        {"0.0.0.0", "0.0.0.0"},
        {"::", "::"},
        {"2001:DB8:0:0:0:0:0:1", "2001:db8::1"},
        {"[2001:db8::1]", "2001:db8::1"},
        {"fe80::1%eth0", "fe80::1"},
        {"[fe80::1%25eth0]", "fe80::1"},
        {"::ffff:192.0.2.1", "::ffff:192.0.2.1"},
        {"1111:2222:3333:4444:5555:6666:255.255.255.255", "1111:2222:3333:4444:5555:6666:ffff:ffff"},
    };
    for (const auto& row : rows) {
        KxInetAddress address;
        EXPECT_TRUE(address.initFromAddress(row.text)) << row.text;
        EXPECT_EQ(address.getHostAddress(), row.written) << row.text;
        KxInetAddress again;
        EXPECT_TRUE(again.initFromAddress(address.getHostAddress()));
        EXPECT_EQ(again, address);
    }
}

TEST(KxInetAddressTest, RefusesTheRestAndStaysAsItIs) {
    KxInetAddress address;
    ASSERT_TRUE(address.initFromAddress("192.0.2.1"));
    const KxInetAddress before = address;
    for (const std::string_view text : {"",
                                        " 192.0.2.1",
                                        "192.0.2.1 ",
                                        "192.0.2",
                                        "192.0.2.256",
                                        "192.0.2.1:5060",
                                        "[192.0.2.1]",
                                        "192.0.2.1%eth0",
                                        "host",
                                        "[::1",
                                        "::1]",
                                        "[::1]:5060",
                                        "::1%",
                                        "[]",
                                        "[:]",
                                        ":",
                                        ":::",
                                        "1:2:3:4:5:6:7:8:9",
                                        "::g",
                                        "[[::1]]"}) {
        EXPECT_FALSE(address.initFromAddress(text)) << text;
        EXPECT_EQ(address, before) << text;
    }
    EXPECT_FALSE(address.initFromAddress(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(address.initFromAddress(std::string_view("192.0.2.1\0.5", 12)));
    EXPECT_FALSE(address.initFromAddress(std::string(100000, '1') + ":"));
    EXPECT_EQ(address, before);
}

TEST(KxInetAddressTest, NoneIsNotTheZeroAddress) {
    KxInetAddress none;
    EXPECT_EQ(none.getHostAddress(), "");
    KxInetAddress zero4;
    KxInetAddress zero6;
    ASSERT_TRUE(zero4.initFromAddress("0.0.0.0") && zero6.initFromAddress("::"));
    EXPECT_FALSE(none == zero4);
    EXPECT_FALSE(zero4 == zero6);
    zero4.constructor();
    EXPECT_EQ(none, zero4);
}

TEST(KxInetAddressTest, NameOfThisHostCanStandInAMessage) {
    EXPECT_EQ(KxInetAddress::sGetLocalHostName().view().find_first_of(" \r\n@<>;,"), std::string_view::npos);
}
