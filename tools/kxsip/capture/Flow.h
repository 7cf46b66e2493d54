#pragma once

#include "tools/kxsip/Origin.h"

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

/** An IPv4 or IPv6 address as bytes, which is compared faster than its text. */
struct IpAddress {
    std::array<std::uint8_t, 16> octets{}; ///< Of an IPv4 address the first four.
    bool isV6 = false;

    /** `octets` are the 4 or 16 bytes of the address. */
    static IpAddress sOf(std::string_view octets);
    std::string text() const;

    auto operator<=>(const IpAddress&) const = default;
};

/** Source and destination of a UDP datagram or TCP segment. */
struct Flow {
    IpAddress source;
    IpAddress destination;
    std::uint16_t sourcePort = 0;
    std::uint16_t destinationPort = 0;

    Flow reversed() const { return {destination, source, destinationPort, sourcePort}; }
    /** Whether one of the ports is usual for SIP: 5060, 5061, 5080. */
    bool hasSipPort() const;
    Origin origin(std::chrono::microseconds time, const char* transport) const;

    auto operator<=>(const Flow&) const = default;
};
