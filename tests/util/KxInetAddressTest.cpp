#include "util/KxInetAddress.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

TEST(KxInetAddressTest, ReadsAddressesAndWritesThemShort) {
    const std::pair<const char*, const char*> rows[] = {
        {"192.0.2.1", "192.0.2.1"},
        {"2001:DB8:0:0:0:0:0:1", "2001:db8::1"},
        {"[2001:db8::1]", "2001:db8::1"},
        {"fe80::1%eth0", "fe80::1"},
        {"[fe80::1%25eth0]", "fe80::1"},
        {"1111:2222:3333:4444:5555:6666:255.255.255.255", "1111:2222:3333:4444:5555:6666:ffff:ffff"},
    };
    for (const auto& [text, written] : rows) {
        KxInetAddress address;
        EXPECT_TRUE(address.initFromAddress(std::string_view(text))) << text;
        EXPECT_EQ(address.getHostAddress(), written) << text;
    }
}

TEST(KxInetAddressTest, RefusesTheRestAndStaysAsItIs) {
    KxInetAddress address;
    ASSERT_TRUE(address.initFromAddress("192.0.2.1"));
    const KxInetAddress before = address;
    for (const std::string_view text : {"", " 192.0.2.1", "192.0.2.1:5060", "[192.0.2.1]", "192.0.2.1%eth0", "[::1",
                                        "::1]", "[::1]:5060", "::1%", "[]", ":"}) {
        EXPECT_FALSE(address.initFromAddress(text)) << text;
        EXPECT_EQ(address, before) << text;
    }
    EXPECT_FALSE(address.initFromAddress(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(address.initFromAddress(std::string_view("192.0.2.1\0.5", 12)));
    EXPECT_FALSE(address.initFromAddress(std::string(100000, '1') + ":"));
    EXPECT_EQ(address, before);
    address.constructor();
    EXPECT_EQ(address.getHostAddress(), "");
}

TEST(KxInetAddressTest, NameOfThisHostCanStandInAMessage) {
    EXPECT_EQ(KxInetAddress::sGetLocalHostName().view().find_first_of(" \r\n@<>;,"), std::string_view::npos);
}
