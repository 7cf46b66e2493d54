#include "tests/util/Streams.h"

#include "util/KxSocketImpl.h"

TEST(KxSocketImplTest, NamesAndTransportsMatchAndOthersAreRefused) {
    const char* const names[][2] = {{"UDP", "udp"},   {"TCP", "tcp"}, {"TLS", "tls"},
                                    {"SCTP", "sctp"}, {"WS", "ws"},   {"WSS", "wss"}};
    for (std::size_t i = 0; i < std::size(names); ++i) {
        const auto transport = static_cast<KxSocketImpl::Transport>(i);
        const auto& [upper, lower] = names[i];
        EXPECT_EQ(KxSocketImpl::getTransportString(transport), upper);
        EXPECT_EQ(KxSocketImpl::getTransportString(transport, true), lower);
        for (const std::string& name : {std::string(upper), upper[0] + std::string(lower + 1)}) {
            const auto parsed = KxSocketImpl::parseTransport(name);
            ASSERT_TRUE(parsed.isValid()) << name;
            EXPECT_EQ(parsed.get(), transport) << name;
        }
    }
    for (const int wrong : {6, -1}) {
        EXPECT_EQ(KxSocketImpl::getTransportString(static_cast<KxSocketImpl::Transport>(wrong)), "UNKNOWN");
        EXPECT_EQ(KxSocketImpl::getTransportString(static_cast<KxSocketImpl::Transport>(wrong), true), "unknown");
    }
    for (const std::string_view name : {"", "u", "ud", "udpx", "udp ", " udp", "wsss", "\x15\x04\x10", "\x57\x33"}) {
        EXPECT_FALSE(KxSocketImpl::parseTransport(HeapText(name).view()).isValid()) << name;
    }
    EXPECT_FALSE(KxSocketImpl::parseTransport(std::string_view("ws\0", 3)).isValid());
    EXPECT_FALSE(KxSocketImpl::parseTransport(static_cast<const char*>(nullptr)).isValid());
}
