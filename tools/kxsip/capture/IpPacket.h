#pragma once

#include "tools/kxsip/capture/Flow.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>

/** The error that a packet is shorter than its own headers say, or contradicts itself. */
class MalformedPacket : public std::runtime_error {
public:
    MalformedPacket() : std::runtime_error("malformed packet") {}
};

/** The identifier of the datagram of a fragment, and the position of the fragment in it. [RFC 791 2.3, RFC 8200 4.5] */
struct FragmentPlace {
    std::uint32_t datagram = 0;
    std::size_t offset = 0; ///< In bytes.
    bool isLast = false;
};

/** An IPv4 or IPv6 packet, or a fragment of one. */
struct IpPacket {
    static constexpr std::uint8_t kTcp = 6;
    static constexpr std::uint8_t kUdp = 17;

    IpAddress source;
    IpAddress destination;
    std::uint8_t protocol = 0; ///< Of the payload, or of the datagram that the fragment belongs to.
    std::optional<FragmentPlace> fragment;
    std::string_view payload; ///< A part of the frame, without what follows the packet.

    /** Whether frames of this link type can be read: Ethernet, Linux "cooked" in both versions, BSD loopback, raw IP.
        */
    static bool sKnowsLinkType(int linkType);
    /** Returns the innermost IP packet of a frame, within VLAN tags, PPPoE, IP in IP, GRE and VXLAN; or nothing if
        there is none. A fragment is returned wherever it comes, since it has no beginning of another packet to be
        found. At most 32 layers are read. Throws MalformedPacket. */
    static std::optional<IpPacket> sFind(int linkType, std::string_view frame);
    /** For a fragment: returns what sFind would return if the packet were whole, with `whole` as its payload. Throws
        MalformedPacket. */
    std::optional<IpPacket> joined(std::string_view whole) const;
};
