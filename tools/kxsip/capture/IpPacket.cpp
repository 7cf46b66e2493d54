#include "tools/kxsip/capture/IpPacket.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <array>

namespace {

constexpr int kMostLayers = 32;

namespace ether { // types of what follows an Ethernet header or VLAN tag
constexpr std::size_t kIpv4 = 0x0800;
constexpr std::size_t kIpv6 = 0x86DD;
constexpr std::size_t kEthernet = 0x6558;
constexpr std::size_t kVlan = 0x8100;
constexpr std::size_t kServiceVlan = 0x88A8; // IEEE 802.1ad
constexpr std::size_t kOldServiceVlan = 0x9100;
constexpr std::size_t kPppoe = 0x8864;
} // namespace ether

namespace protocol { // of the payload of an IP packet, or of an extension header of IPv6
constexpr std::uint8_t kHopByHop = 0;
constexpr std::uint8_t kIpv4 = 4;
constexpr std::uint8_t kIpv6 = 41;
constexpr std::uint8_t kRouting = 43;
constexpr std::uint8_t kFragment = 44;
constexpr std::uint8_t kGre = 47;
constexpr std::uint8_t kAuthentication = 51;
constexpr std::uint8_t kOptions = 60;
} // namespace protocol

/** A part of a frame that begins with a header of this kind. */
struct Layer {
    enum class Kind { Ethernet, Typed, Ip };

    Kind kind;
    std::string_view bytes;
    std::size_t type = 0; ///< Of Typed: what the bytes are, as in an Ethernet header.
};

using Next = std::optional<Layer>; // nothing if no header follows that can lead to an IP packet

std::size_t number(std::string_view bytes, std::size_t at, std::size_t length) {
    if (at + length > bytes.size()) {
        throw MalformedPacket();
    }
    std::size_t value = 0;
    for (std::size_t i = at; i < at + length; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

std::string_view after(std::string_view bytes, std::size_t header) {
    if (header > bytes.size()) {
        throw MalformedPacket();
    }
    return bytes.substr(header);
}

Next afterEthernet(std::string_view bytes) {
    return Layer{Layer::Kind::Typed, after(bytes, 14), number(bytes, 12, 2)};
}

/** [RFC 2516 4, RFC 1661 2] */
Next afterPppoe(std::string_view bytes) {
    constexpr std::size_t kHeader = 6;
    constexpr std::size_t kIpv4 = 0x0021;
    constexpr std::size_t kIpv6 = 0x0057;
    const std::string_view ppp = after(bytes, kHeader).substr(0, number(bytes, 4, 2));
    const std::size_t type = number(ppp, 0, 2);
    return type == kIpv4 || type == kIpv6 ? Next({Layer::Kind::Ip, after(ppp, 2)}) : std::nullopt;
}

Next afterType(const Layer& layer) {
    switch (layer.type) {
    case ether::kIpv4:
    case ether::kIpv6:
        return Layer{Layer::Kind::Ip, layer.bytes};
    case ether::kEthernet:
        return Layer{Layer::Kind::Ethernet, layer.bytes};
    case ether::kVlan:
    case ether::kServiceVlan:
    case ether::kOldServiceVlan:
        return Layer{Layer::Kind::Typed, after(layer.bytes, 4), number(layer.bytes, 2, 2)};
    case ether::kPppoe:
        return afterPppoe(layer.bytes);
    default:
        return std::nullopt;
    }
}

/** [RFC 2784 2, RFC 2890 2] */
Next afterGre(std::string_view bytes) {
    constexpr std::size_t kChecksum = 0x8000;
    constexpr std::size_t kKey = 0x2000;
    constexpr std::size_t kSequence = 0x1000;
    constexpr std::size_t kNotRead = 0x4007; // source routes [RFC 1701], and any version but 0
    const std::size_t flags = number(bytes, 0, 2);
    if ((flags & kNotRead) != 0) {
        return std::nullopt;
    }
    std::size_t length = 4;
    for (const std::size_t flag : {kChecksum, kKey, kSequence}) {
        length += (flags & flag) != 0 ? 4 : 0;
    }
    return Layer{Layer::Kind::Typed, after(bytes, length), number(bytes, 2, 2)};
}

/** `bytes` begin with the UDP header. [RFC 7348 5] */
Next afterVxlan(std::string_view bytes) {
    constexpr std::size_t kPort = 4789;
    constexpr std::size_t kHeaders = 16;
    constexpr std::size_t kHasNetwork = 0x08;
    if (bytes.size() < kHeaders || number(bytes, 2, 2) != kPort || number(bytes, 8, 1) != kHasNetwork) {
        return std::nullopt;
    }
    return Layer{Layer::Kind::Ethernet, bytes.substr(kHeaders)};
}

Next afterIp(const IpPacket& packet) {
    if (packet.fragment) {
        return std::nullopt;
    }
    switch (packet.protocol) {
    case protocol::kIpv4:
    case protocol::kIpv6:
        return Layer{Layer::Kind::Ip, packet.payload};
    case protocol::kGre:
        return afterGre(packet.payload);
    case IpPacket::kUdp:
        return afterVxlan(packet.payload);
    default:
        return std::nullopt;
    }
}

/** Passes over the extension headers at the beginning of the payload, up to that of a fragment. [RFC 8200 4] */
void skipExtensions(IpPacket& packet) {
    while (!packet.fragment) {
        std::size_t length = 8;
        switch (packet.protocol) {
        case protocol::kHopByHop:
        case protocol::kRouting:
        case protocol::kOptions:
            length += number(packet.payload, 1, 1) * 8;
            break;
        case protocol::kAuthentication: // [RFC 4302 2.2]
            length += number(packet.payload, 1, 1) * 4;
            break;
        case protocol::kFragment:
            if (const std::size_t place = number(packet.payload, 2, 2); (place & 0xFFF9U) != 0) { // else it is whole
                const auto id = static_cast<std::uint32_t>(number(packet.payload, 4, 4));
                packet.fragment = {id, place & 0xFFF8U, (place & 1U) == 0};
            }
            break;
        default:
            return;
        }
        packet.protocol = static_cast<std::uint8_t>(number(packet.payload, 0, 1));
        packet.payload = after(packet.payload, length);
    }
}

/** A packet that says it has no length comes from a host whose network card cuts it. */
IpPacket ipv4(std::string_view bytes) {
    const std::size_t header = (number(bytes, 0, 1) & 0xFU) * 4;
    const std::size_t length = number(bytes, 2, 2);
    if (header < 20 || (length != 0 && length < header)) {
        throw MalformedPacket();
    }
    IpPacket packet;
    packet.payload = after(length == 0 ? bytes : bytes.substr(0, length), header);
    packet.protocol = static_cast<std::uint8_t>(number(bytes, 9, 1));
    packet.source = IpAddress::sOf(bytes.substr(12, 4));
    packet.destination = IpAddress::sOf(bytes.substr(16, 4));
    constexpr std::size_t kMore = 0x2000;
    constexpr std::size_t kOffset = 0x1FFF;
    if (const std::size_t place = number(bytes, 6, 2); (place & (kMore | kOffset)) != 0) {
        packet.fragment = {static_cast<std::uint32_t>(number(bytes, 4, 2)), (place & kOffset) * 8,
                           (place & kMore) == 0};
    } else if (packet.protocol == protocol::kAuthentication) {
        skipExtensions(packet);
    }
    return packet;
}

IpPacket ipv6(std::string_view bytes) {
    constexpr std::size_t kHeader = 40;
    const std::size_t length = number(bytes, 4, 2);
    IpPacket packet;
    packet.payload = after(bytes, kHeader);
    packet.payload = length == 0 ? packet.payload : packet.payload.substr(0, length);
    packet.protocol = static_cast<std::uint8_t>(number(bytes, 6, 1));
    packet.source = IpAddress::sOf(bytes.substr(8, 16));
    packet.destination = IpAddress::sOf(bytes.substr(24, 16));
    skipExtensions(packet);
    return packet;
}

/** Takes the IP version from the packet itself, since each kind of link gives it in a different way. */
std::optional<IpPacket> ipPacket(std::string_view bytes) {
    switch (bytes.empty() ? 0 : number(bytes, 0, 1) >> 4) {
    case 4:
        return ipv4(bytes);
    case 6:
        return ipv6(bytes);
    default:
        return std::nullopt;
    }
}

/** Returns the innermost packet within the layer; `found` if there is none. */
std::optional<IpPacket> innermost(Next layer, std::optional<IpPacket> found) {
    for (int depth = 0; layer; ++depth) {
        if (depth == kMostLayers) {
            return std::nullopt;
        }
        if (layer->kind == Layer::Kind::Ip) {
            const std::optional<IpPacket> packet = ipPacket(layer->bytes);
            if (!packet) {
                return found;
            }
            found = packet;
            layer = afterIp(*packet);
        } else {
            layer = layer->kind == Layer::Kind::Ethernet ? afterEthernet(layer->bytes) : afterType(*layer);
        }
    }
    return found;
}

struct Link {
    int type;
    Layer::Kind kind;
    std::size_t header; ///< Bytes before the layer.
    std::size_t typeAt; ///< Of Typed: the offset of the type in the header.
};

constexpr std::array<Link, 8> kLinks = {{{DLT_EN10MB, Layer::Kind::Ethernet, 0, 0},
                                         {DLT_LINUX_SLL, Layer::Kind::Typed, 16, 14},
                                         {DLT_LINUX_SLL2, Layer::Kind::Typed, 20, 0},
                                         {DLT_NULL, Layer::Kind::Ip, 4, 0},
                                         {DLT_LOOP, Layer::Kind::Ip, 4, 0},
                                         {DLT_RAW, Layer::Kind::Ip, 0, 0},
                                         {DLT_IPV4, Layer::Kind::Ip, 0, 0},
                                         {DLT_IPV6, Layer::Kind::Ip, 0, 0}}};

const Link* findLink(int type) {
    const auto* const link =
        std::find_if(kLinks.begin(), kLinks.end(), [type](const Link& l) { return l.type == type; });
    return link == kLinks.end() ? nullptr : link;
}

} // namespace

bool IpPacket::sKnowsLinkType(int linkType) {
    return findLink(linkType) != nullptr;
}

std::optional<IpPacket> IpPacket::sFind(int linkType, std::string_view frame) {
    const Link* const link = findLink(linkType);
    if (link == nullptr) {
        return std::nullopt;
    }
    const std::size_t type = link->kind == Layer::Kind::Typed ? number(frame, link->typeAt, 2) : 0;
    return innermost(Layer{link->kind, after(frame, link->header), type}, std::nullopt);
}

std::optional<IpPacket> IpPacket::joined(std::string_view whole) const {
    IpPacket packet = *this;
    packet.fragment.reset();
    packet.payload = whole;
    if (packet.source.isV6 || packet.protocol == protocol::kAuthentication) {
        skipExtensions(packet);
    }
    return innermost(afterIp(packet), packet);
}
