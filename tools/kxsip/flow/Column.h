#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/** A column of a ladder: a host, or a port of a host that sends to itself. */
struct Column {
    std::string name;
    std::set<std::uint16_t> ports; ///< The ports that were used; empty if the name has the port.

    /** Returns "port 5060" or "3 ports"; empty if the name has the port. */
    std::string portText() const;

    /** Returns the names of the columns; those with more than `most` characters have the ellipsis
        instead of some characters in the middle. Returns nothing if two names would then be the same. */
    static std::vector<std::string> sShortNames(const std::vector<Column>& columns, std::size_t most,
                                                std::string_view ellipsis = "\u2026");
};
