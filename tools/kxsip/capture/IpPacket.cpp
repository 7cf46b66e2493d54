#include "tools/kxsip/capture/IpPacket.h"

#include <pcap/pcap.h>
#include <tins/ethernetII.h>
#include <tins/exceptions.h>
#include <tins/ip.h>
#include <tins/ipv6.h>

#include <algorithm>
#include <array>
#include <memory>

namespace {

using Pdu = std::unique_ptr<Tins::PDU>;

struct Link {
    int type;
    std::size_t header; ///< Bytes before the IP packet; not used for Ethernet.
};

constexpr std::array<Link, 9> kLinks = {{{DLT_EN10MB, 0},
                                         {DLT_LINUX_SLL, 16},
                                         {DLT_LINUX_SLL2, 20},
                                         {DLT_NULL, 4},
                                         {DLT_LOOP, 4},
                                         {DLT_RAW, 0},
                                         {101, 0}, // raw IP, by its number in files
                                         {DLT_IPV4, 0},
                                         {DLT_IPV6, 0}}};

const Link* findLink(int type) {
    for (const Link& link : kLinks) {
        if (link.type == type) {
            return &link;
        }
    }
    return nullptr;
}

const std::uint8_t* octets(std::string_view bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

/** Takes the IP version from the packet itself, since each kind of link gives it in a different way. */
Pdu dissectIp(std::string_view bytes) {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    switch (bytes.empty() ? 0 : octets(bytes)[0] >> 4) {
    case 4:
        return std::make_unique<Tins::IP>(octets(bytes), size);
    case 6:
        return std::make_unique<Tins::IPv6>(octets(bytes), size);
    default:
        return nullptr;
    }
}

Pdu dissect(const Link& link, std::string_view frame) {
    if (link.type == DLT_EN10MB) {
        return std::make_unique<Tins::EthernetII>(octets(frame), static_cast<std::uint32_t>(frame.size()));
    }
    if (frame.size() < link.header) {
        throw Tins::malformed_packet();
    }
    return dissectIp(frame.substr(link.header));
}

IpPacket taken(Tins::IP& ip) {
    IpPacket packet{
        ip.src_addr().to_string(), ip.dst_addr().to_string(), ip.protocol(), {}, Pdu(ip.release_inner_pdu())};
    if (ip.is_fragmented()) {
        packet.fragment = {ip.id(), std::size_t{ip.fragment_offset()} * 8,
                           (ip.flags() & Tins::IP::MORE_FRAGMENTS) == 0};
    }
    return packet;
}

/** Returns the protocol that follows the Fragment header, which libtins does not keep. `packet` begins with the IPv6
    header. */
std::uint8_t fragmentedProtocol(std::string_view packet) {
    constexpr std::size_t kFixed = 40;
    constexpr std::size_t kNextHeader = 6;
    std::uint8_t next = packet.size() > kNextHeader ? octets(packet)[kNextHeader] : 0;
    std::size_t at = kFixed;
    while (at + 8 <= packet.size() && next != Tins::IPv6::FRAGMENT) {
        next = octets(packet)[at];
        at += (std::size_t{octets(packet)[at + 1]} + 1) * 8;
    }
    return at + 8 <= packet.size() ? octets(packet)[at] : 0;
}

IpPacket taken(Tins::IPv6& ip, std::string_view bytes) {
    IpPacket packet{ip.src_addr().to_string(), ip.dst_addr().to_string(), 0, {}, Pdu(ip.release_inner_pdu())};
    const Tins::IPv6::ext_header* const header = ip.search_header(Tins::IPv6::FRAGMENT);
    if (header != nullptr && header->data_size() >= 6) {
        const std::uint8_t* const data = header->data_ptr();
        const auto place = static_cast<unsigned>(data[0] << 8 | data[1]);
        std::uint32_t id = 0;
        for (int i = 2; i < 6; ++i) {
            id = id << 8 | data[i];
        }
        packet.protocol = fragmentedProtocol(bytes);
        packet.fragment = {id, place & 0xFFF8U, (place & 1U) == 0};
    }
    return packet;
}

} // namespace

bool IpPacket::sKnowsLinkType(int linkType) {
    return findLink(linkType) != nullptr;
}

std::optional<IpPacket> IpPacket::sFind(int linkType, std::string_view frame) {
    const Link* const link = findLink(linkType);
    const Pdu root = link == nullptr ? nullptr : dissect(*link, frame);
    Tins::PDU* innermost = nullptr;
    std::size_t begin = 0;
    std::size_t at = link == nullptr ? 0 : link->header;
    for (Tins::PDU* layer = root.get(); layer != nullptr; layer = layer->inner_pdu()) {
        if (layer->pdu_type() == Tins::PDU::IP || layer->pdu_type() == Tins::PDU::IPv6) {
            innermost = layer;
            begin = at;
        }
        at += layer->header_size();
    }
    if (innermost == nullptr) {
        return std::nullopt;
    }
    if (innermost->pdu_type() == Tins::PDU::IP) {
        return taken(static_cast<Tins::IP&>(*innermost));
    }
    return taken(static_cast<Tins::IPv6&>(*innermost), frame.substr(std::min(begin, frame.size())));
}
