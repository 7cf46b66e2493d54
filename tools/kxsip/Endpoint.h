#pragma once

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
