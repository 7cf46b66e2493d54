#include "util/KxSocketImpl.h"

#include <gtest/gtest.h>

#include <memory>

TEST(KxSocketImplTest, NamesAndTransportsMatch) {
    const struct {
        int transport;
        const char* upper;
        const char* lower;
    } rows[] = {{0, "UDP", "udp"},   {1, "TCP", "tcp"}, {2, "TLS", "tls"},
                {3, "SCTP", "sctp"}, {4, "WS", "ws"},   {5, "WSS", "wss"}};
    for (const auto& row : rows) {
        const auto transport = static_cast<KxSocketImpl::Transport>(row.transport);
        EXPECT_EQ(KxSocketImpl::getTransportString(transport), row.upper);
        EXPECT_EQ(KxSocketImpl::getTransportString(transport, true), row.lower);
        std::string mixed(row.lower);
        mixed[1] = row.upper[1];
        for (const std::string& name : {std::string(row.upper), std::string(row.lower), mixed}) {
            const auto parsed = KxSocketImpl::parseTransport(name);
            ASSERT_TRUE(parsed.isValid()) << name;
            EXPECT_EQ(parsed.get(), transport) << name;
        }
    }
    for (const int wrong : {6, -1, 1000000}) {
        EXPECT_EQ(KxSocketImpl::getTransportString(static_cast<KxSocketImpl::Transport>(wrong)), "UNKNOWN");
        EXPECT_EQ(KxSocketImpl::getTransportString(static_cast<KxSocketImpl::Transport>(wrong), true), "unknown");
    }
}

TEST(KxSocketImplTest, RefusesOtherNames) {
    for (const std::string_view name : {"", "u", "ud", "udpx", "xudp", "udp ", " udp", "tls-sctp", "wsss", "sct",
                                        "dtls", "U\x44\x50\x20", "\x15\x04\x10", "\x57\x33"}) {
        const auto exact = std::make_unique<char[]>(name.size());
        name.copy(exact.get(), name.size());
        EXPECT_FALSE(KxSocketImpl::parseTransport(std::string_view(exact.get(), name.size())).isValid()) << name;
    }
    EXPECT_FALSE(KxSocketImpl::parseTransport(std::string_view("ws\0", 3)).isValid());
    EXPECT_FALSE(KxSocketImpl::parseTransport(static_cast<const char*>(nullptr)).isValid());
}
