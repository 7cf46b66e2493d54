#pragma once

#include "tests/tools/CaptureBytes.h"

#include <tins/dot1q.h>
#include <tins/ethernetII.h>

#include <array>
#include <map>
#include <memory>
#include <utility>

/** Makes the packets of a capture from a list. An entry of it is a byte that says what packet it is, one more for its
    place, two with the length of its payload, and the payload. */
class PacketList {
public:
    explicit PacketList(std::string_view text) : m_text(text) {}

    bool isEmpty() const { return m_text.empty(); }

    /** Returns the next packet as an Ethernet frame. */
    std::string nextFrame() {
        const unsigned kind = number();
        const unsigned place = number();
        const unsigned length = number() | (number() & 3U) << 8;
        const std::string payload(m_text.substr(0, length));
        m_text.remove_prefix(payload.size());
        if ((kind & kRaw) != 0) {
            return payload;
        }
        Tins::EthernetII frame;
        if ((kind & kTagged) != 0) {
            frame /= Tins::Dot1Q(5);
        }
        frame /= *packetOf(kind, place, payload);
        return CaptureBytes::bytesOf(frame);
    }

private:
    enum : unsigned {
        kTcp = 1,
        kBack = 2,
        kSecondPair = 4,
        kVersion6 = 8,
        kFragment = 16,
        kTagged = 32,
        kTunnel = 64,
        kRaw = 128
    };

    unsigned number() {
        const unsigned value = m_text.empty() ? 0 : static_cast<unsigned char>(m_text.front());
        m_text.remove_prefix(m_text.empty() ? 0 : 1);
        return value;
    }

    /** Returns the segment that follows the one before it; `place` moves it back or on, or gives it a flag. */
    Tins::TCP segmentOf(unsigned kind, unsigned place, const std::string& payload) {
        std::uint32_t& next = m_next[kind & (kBack | kSecondPair)];
        Tins::TCP tcp((kind & kBack) != 0 ? 5060 : 40000, (kind & kBack) != 0 ? 40000 : 5060);
        tcp.seq(next + static_cast<std::uint32_t>(static_cast<std::int8_t>(place)));
        tcp.ack_seq(m_next[(kind & (kBack | kSecondPair)) ^ kBack]);
        const std::array<unsigned, 4> flags = {Tins::TCP::ACK, Tins::TCP::SYN, Tins::TCP::FIN | Tins::TCP::ACK,
                                               Tins::TCP::RST};
        tcp.flags(static_cast<std::uint16_t>(flags.at(place == 0 || payload.size() % 8 != 0 ? 0 : place % 4)));
        next += static_cast<std::uint32_t>(payload.size());
        tcp /= Tins::RawPDU(payload);
        return tcp;
    }

    std::unique_ptr<Tins::PDU> transportOf(unsigned kind, unsigned place, const std::string& payload) {
        if ((kind & kTcp) != 0) {
            return std::make_unique<Tins::TCP>(segmentOf(kind, place, payload));
        }
        auto udp = std::make_unique<Tins::UDP>((kind & kTunnel) != 0 ? 4789 : 5060, 5060);
        udp->inner_pdu(Tins::RawPDU(payload));
        return udp;
    }

    std::unique_ptr<Tins::PDU> packetOf(unsigned kind, unsigned place, const std::string& payload) {
        std::string from = (kind & kSecondPair) != 0 ? "10.0.0.1" : "192.0.2.1";
        std::string to = "192.0.2.2";
        if ((kind & kBack) != 0) {
            std::swap(from, to);
        }
        if ((kind & kVersion6) != 0) {
            auto packet = std::make_unique<Tins::IPv6>("2001:db8::" + to, "2001:db8::" + from);
            packet->inner_pdu(transportOf(kind, place, payload).release());
            return packet;
        }
        auto packet = std::make_unique<Tins::IP>(to, from);
        if ((kind & kTunnel) != 0 && (kind & kTcp) != 0) {
            packet->protocol(47); // GRE
            packet->inner_pdu(Tins::RawPDU(payload));
        } else if ((kind & kFragment) != 0) {
            packet->id(static_cast<std::uint16_t>(kind >> 5));
            packet->protocol((kind & kTcp) != 0 ? 6 : 17);
            packet->fragment_offset(static_cast<std::uint16_t>(place >> 1));
            packet->flags((place & 1U) != 0 ? Tins::IP::MORE_FRAGMENTS : static_cast<Tins::IP::Flags>(0));
            packet->inner_pdu(Tins::RawPDU(payload));
        } else {
            packet->inner_pdu(transportOf(kind, place, payload).release());
        }
        return packet;
    }

    std::string_view m_text;
    std::map<unsigned, std::uint32_t> m_next; ///< The next sequence number of each direction.
};

/** Returns the capture with the listed packets; as pcapng if bit 2 of `format` is set. */
inline std::string listedCapture(std::string_view list, unsigned format) {
    constexpr int kEthernet = 1;
    CaptureBytes capture(kEthernet, (format & 4U) != 0);
    for (PacketList packets(list); !packets.isEmpty();) {
        capture.add(packets.nextFrame());
    }
    return capture.bytes();
}
