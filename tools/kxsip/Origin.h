#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <string>

/** The address and port of a sender or receiver. */
struct Endpoint {
    std::string address; ///< IPv4 or IPv6, without brackets.
    std::uint16_t port = 0;

    /** Returns "192.0.2.1:5060" or "[2001:db8::1]:5060". */
    std::string text() const;

    std::strong_ordering operator<=>(const Endpoint&) const = default;
};

/** Time, source, destination and transport of a captured message. */
struct Origin {
    std::chrono::microseconds time{}; ///< When the last byte was captured, since 1970.
    Endpoint source;
    Endpoint destination;
    const char* transport = ""; ///< "UDP" or "TCP".
};

/** Returns the time, which is since 1970, as "2026-11-21T13:22:21.935691Z". */
std::string utcText(std::chrono::microseconds time);
