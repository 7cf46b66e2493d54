#pragma once

#include <tins/pdu.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/** The identifier of the datagram of a fragment, and the position of the fragment in it. [RFC 791 2.3, RFC 8200 4.5] */
struct FragmentPlace {
    std::uint32_t datagram = 0;
    std::size_t offset = 0; ///< In bytes.
    bool isLast = false;
};

/** An IPv4 or IPv6 packet, or a fragment of one. */
struct IpPacket {
    std::string source;
    std::string destination;
    std::uint8_t protocol = 0; ///< 6 for TCP, 17 for UDP; set for fragments.
    std::optional<FragmentPlace> fragment;
    std::unique_ptr<Tins::PDU> payload; ///< A Tins::UDP, Tins::TCP, another PDU or null; for a fragment its bytes.

    /** Whether frames of this link type can be read: Ethernet (with VLAN tags), Linux "cooked" in both versions, BSD
        loopback, raw IP. */
    static bool sKnowsLinkType(int linkType);
    /** Returns the innermost IP packet of a frame, or nothing if there is none. Throws Tins::exception_base for a
        malformed frame. */
    static std::optional<IpPacket> sFind(int linkType, std::string_view frame);
};
