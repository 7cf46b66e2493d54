#pragma once

#include <tins/pdu.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/** What names the datagram that a fragment belongs to, and where in it the fragment lies. [RFC 791 2.3, RFC 8200 4.5] */
struct FragmentPlace {
    std::uint32_t datagram = 0;
    std::size_t offset = 0; ///< Bytes.
    bool isLast = false;
};

/** An IPv4 or IPv6 packet, or one fragment of one. */
struct IpPacket {
    std::string source;
    std::string destination;
    std::uint8_t protocol = 0; ///< Of a fragment: 6 for TCP, 17 for UDP.
    std::optional<FragmentPlace> fragment;
    std::unique_ptr<Tins::PDU> payload; ///< A Tins::UDP, Tins::TCP, something else or nil; of a fragment its bytes.

    /** Whether frames of this kind are understood: Ethernet (with VLAN tags), Linux "cooked" in both versions, BSD
        loopback, raw IP. */
    static bool sKnowsLinkType(int linkType);
    /** The innermost IP packet of a frame; nothing where it carries none. Throws Tins::exception_base where it is
        malformed. */
    static std::optional<IpPacket> sFind(int linkType, std::string_view frame);
};
