#include "tools/kxsip/capture/CaptureReader.h"

#include "sipobject/messages/KxSipStartLine.h"

#include <tins/exceptions.h>
#include <tins/rawpdu.h>
#include <tins/udp.h>

namespace {

constexpr std::uint8_t kTcp = 6;
constexpr std::uint8_t kUdp = 17;
constexpr std::size_t kMostHeld = 512U << 20;

/** Returns the message of a datagram, empty if it is not a message. */
std::string_view messageOf(const Tins::PDU* payload) {
    const auto* const raw = dynamic_cast<const Tins::RawPDU*>(payload);
    if (raw == nullptr) {
        return {};
    }
    std::string_view bytes(reinterpret_cast<const char*>(raw->payload().data()), raw->payload().size());
    bytes.remove_prefix(std::min(bytes.find_first_not_of("\r\n"), bytes.size()));
    return KxSipStartLine::sIsLikely(bytes.substr(0, bytes.find('\n'))) ? bytes : std::string_view();
}

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace

CaptureReader::CaptureReader(Input& input, bool keepsPackets)
    : m_input(input),
      m_capture(input),
      m_streams([this](const Origin& origin, std::string message, Packets packets) {
          m_found.push_back({origin, std::move(message), std::move(packets)});
      }),
      m_keepsPackets(keepsPackets),
      m_held(std::make_shared<std::size_t>(0)) {
    if (!IpPacket::sKnowsLinkType(m_capture.linkType())) {
        throw CaptureError("its link type " + std::to_string(m_capture.linkType()) +
                           " is not supported; capture on an Ethernet or loopback interface, or on \"any\"");
    }
}

std::optional<ReadMessage> CaptureReader::next() {
    while (m_found.empty() && !m_ended) {
        if (const std::optional<Frame> frame = m_capture.next()) {
            take(*frame);
        } else {
            m_ended = true;
            m_streams.finish();
        }
    }
    if (m_found.empty()) {
        return std::nullopt;
    }
    Found found = std::move(m_found.front());
    m_found.pop_front();
    return parsed(std::move(found));
}

void CaptureReader::take(const Frame& frame) {
    const Packets carriers = kept(frame);
    ++m_packets;
    m_cut += frame.bytes.size() < frame.length ? 1U : 0U;
    try {
        if (std::optional<IpPacket> packet = IpPacket::sFind(m_capture.linkType(), frame.bytes)) {
            take(std::move(*packet), frame.time, carriers);
        }
    } catch (const Tins::exception_base&) {
        ++m_malformed;
    }
}

/** Returns a copy of the frame, or nothing if packets are not kept. */
Packets CaptureReader::kept(const Frame& frame) {
    if (!m_keepsPackets) {
        return {};
    }
    if (*m_held + frame.bytes.size() > kMostHeld) {
        ++m_notKept;
        return {};
    }
    *m_held += frame.bytes.size();
    const auto release = [held = m_held](const Packet* packet) {
        *held -= packet->bytes.size();
        delete packet;
    };
    return {std::shared_ptr<const Packet>(
        new Packet{frame.time, m_capture.linkType(), frame.length, m_packets, std::string(frame.bytes)}, release)};
}

void CaptureReader::take(IpPacket packet, std::chrono::microseconds time, const Packets& carriers) {
    const Origin origin{time, {packet.source, 0}, {packet.destination, 0}, ""};
    if (!packet.fragment) {
        if (packet.payload != nullptr) {
            takeTransport(*packet.payload, origin, carriers);
        }
    } else if (const std::optional<Fragments::Whole> whole = m_fragments.take(packet, time, carriers)) {
        takeWhole(*whole, packet.protocol, origin);
    }
}

void CaptureReader::takeWhole(const Fragments::Whole& datagram, std::uint8_t protocol, const Origin& origin) {
    const auto* const octets = reinterpret_cast<const std::uint8_t*>(datagram.bytes.data());
    const auto size = static_cast<std::uint32_t>(datagram.bytes.size());
    if (protocol == kUdp) {
        takeTransport(Tins::UDP(octets, size), origin, datagram.packets);
    } else if (protocol == kTcp) {
        takeTransport(Tins::TCP(octets, size), origin, datagram.packets);
    }
}

void CaptureReader::takeTransport(const Tins::PDU& transport, Origin origin, const Packets& carriers) {
    if (const auto* const udp = dynamic_cast<const Tins::UDP*>(&transport)) {
        origin.source.port = udp->sport();
        origin.destination.port = udp->dport();
        origin.transport = "UDP";
        if (const std::string_view message = messageOf(udp->inner_pdu()); !message.empty()) {
            m_found.push_back({origin, std::string(message), carriers});
        }
    } else if (const auto* const tcp = dynamic_cast<const Tins::TCP*>(&transport)) {
        origin.source.port = tcp->sport();
        origin.destination.port = tcp->dport();
        origin.transport = "TCP";
        m_streams.take(*tcp, origin, carriers);
    }
}

ReadMessage CaptureReader::parsed(Found found) {
    ReadMessage read;
    read.file = m_input.name();
    read.isLive = m_input.isLive();
    read.index = m_index++;
    read.origin = found.origin;
    read.packets = std::move(found.packets);
    const std::size_t taken = read.parse(found.bytes);
    read.unread = found.bytes.size() - taken;
    read.text = found.bytes.substr(0, read.isRefused() ? found.bytes.size() : taken);
    return read;
}

std::vector<std::string> CaptureReader::notes() const {
    std::vector<std::string> notes;
    const auto note = [&notes](std::size_t count, const char* one, const char* many) {
        if (count > 0) {
            notes.push_back(counted(count, one, many));
        }
    };
    note(m_malformed, "malformed packet passed over", "malformed packets passed over");
    note(m_cut, "packet captured only in part; use tcpdump -s 0", "packets captured only in part; use tcpdump -s 0");
    note(m_notKept, "packet too many to be held; its message is not written whole",
         "packets too many to be held; their messages are not written whole");
    note(m_fragments.unfinished(), "IP datagram lacks fragments", "IP datagrams lack fragments");
    note(m_streams.gaps(), "gap in a TCP stream, what it cuts off is read as far as it is there",
         "gaps in TCP streams, what they cut off is read as far as it is there");
    if (!m_capture.damage().empty()) {
        notes.push_back("the capture is damaged after packet " + std::to_string(m_packets) + " (" + m_capture.damage() +
                        "); what comes before it was read");
    } else if (m_index == 0) {
        notes.push_back("no SIP message in " + counted(m_packets, "packet", "packets") +
                        "; SIP over TLS can't be read");
    }
    return notes;
}

Outcome CaptureReader::outcome() const {
    if (!m_capture.damage().empty()) {
        return Outcome::Failed;
    }
    return m_index == 0 ? Outcome::Refused : Outcome::Valid;
}
