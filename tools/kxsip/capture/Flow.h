#pragma once

#include "tools/kxsip/Origin.h"

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

/** An IPv4 or IPv6 address as numbers, which are compared faster than its text. */
struct IpAddress {
    std::uint64_t high = 0; ///< The first eight octets of an IPv6 address.
    std::uint64_t low = 0;  ///< The others, or all four of an IPv4 address.
    bool isV6 = false;

    /** `octets` are the 4 or 16 bytes of the address. */
    static IpAddress sOf(std::string_view octets);
    std::string text() const;

    auto operator<=>(const IpAddress&) const = default;
};

/** Source and destination of a UDP datagram or TCP segment. */
struct Flow {
    std::uint16_t sourcePort = 0; // the ports come first, since they differ most often
    std::uint16_t destinationPort = 0;
    IpAddress source;
    IpAddress destination;

    Flow reversed() const { return {destinationPort, sourcePort, destination, source}; }
    /** Whether one of the ports is usual for SIP: 5060, 5061, 5080. */
    bool hasSipPort() const;
    Origin origin(std::chrono::microseconds time, const char* transport) const;

    auto operator<=>(const Flow&) const = default;
};
