#pragma once

#include <cstdint>
#include <set>
#include <string>

/** A column of a ladder: a host, or a port of a host that sends to itself. */
struct Column {
    std::string name;
    std::set<std::uint16_t> ports; ///< The ports that were used; empty if the name has the port.

    /** Returns "port 5060" or "3 ports"; empty if the name has the port. */
    std::string portText() const;
};
