#pragma once

#include "tools/kxsip/Endpoint.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

/** An address or network, perhaps with a port: "192.0.2.1", "192.0.2.1:5060", "10.0.0.0/8", "2001:db8::1",
    "[2001:db8::1]:5060", "2001:db8::/32". */
class AddressPattern {
public:
    /** Returns nothing for any other text. */
    static std::optional<AddressPattern> sRead(const std::string& text);
    /** Returns the error for such a text, else an empty one. */
    static std::string sFault(const std::string& text);

    bool matches(const Endpoint& end) const;

private:
    struct Address {
        int family = 0; ///< AF_INET or AF_INET6.
        std::array<std::uint8_t, 16> bytes{};
    };

    static std::optional<Address> sAddress(const std::string& text);

    Address m_address;
    unsigned m_bits = 0; ///< How many bits of the address must be the same.
    std::optional<std::uint16_t> m_port;
};
