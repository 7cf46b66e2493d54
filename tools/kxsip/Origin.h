#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <string>

/** One end of a conversation. */
struct Endpoint {
    std::string address; ///< IPv4 or IPv6, without brackets.
    std::uint16_t port = 0;

    /** "192.0.2.1:5060", "[2001:db8::1]:5060". */
    std::string text() const;

    std::strong_ordering operator<=>(const Endpoint&) const = default;
};

/** Where a captured message comes from. */
struct Origin {
    std::chrono::microseconds time{}; ///< When its last byte was captured, since 1970.
    Endpoint source;
    Endpoint destination;
    const char* transport = ""; ///< "UDP" or "TCP".
};

/** "2026-11-21T13:22:21.935691Z". */
std::string utcText(std::chrono::microseconds time);
