#include "tools/kxsip/capture/CaptureReader.h"

#include "tools/kxsip/capture/Datagram.h"

#include <tins/exceptions.h>
#include <tins/rawpdu.h>
#include <tins/udp.h>

#include <algorithm>

namespace {

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace

CaptureReader::CaptureReader(Input& input, bool keepsPackets)
    : m_input(input),
      m_capture(CaptureFile::sOpen(input)),
      m_keeper(keepsPackets),
      m_streams(m_pairs, [this](TcpStreams::Found message) {
          m_pairs.add(message.flow);
          m_found.push_back(
              {message.flow.origin(message.time, "TCP"), std::move(message.bytes), std::move(message.packets)});
      }) {}

std::optional<ReadMessage> CaptureReader::next() {
    while (findNext()) {
        Found found = std::move(m_found.front());
        m_found.pop_front();
        if (!m_mayBeWanted || m_mayBeWanted(found.bytes)) {
            return parsed(std::move(found));
        }
        ++m_index;
    }
    return std::nullopt;
}

/** Reads frames until there is a message. Returns whether there is one. */
bool CaptureReader::findNext() {
    while (m_found.empty() && !m_ended) {
        if (const std::optional<Frame> frame = m_capture->next()) {
            take(*frame);
        } else {
            m_ended = true;
            m_streams.finish();
        }
    }
    return !m_found.empty();
}

void CaptureReader::take(const Frame& frame) {
    Packets carriers = m_keeper.keep(frame, m_packets);
    ++m_packets;
    m_unsupported += IpPacket::sKnowsLinkType(frame.linkType) ? 0U : 1U;
    m_cut += frame.bytes.size() < frame.length ? 1U : 0U;
    try {
        std::optional<IpPacket> packet = IpPacket::sFind(frame.linkType, frame.bytes);
        std::unique_ptr<Fragments::Whole> whole; // has the bytes of the packet
        while (packet && packet->fragment) {     // a datagram that is put together may hold another fragment
            std::unique_ptr<Fragments::Whole> joined = m_fragments.take(*packet, frame.time, carriers);
            if (joined == nullptr) {
                return;
            }
            packet = packet->joined(joined->bytes);
            carriers = std::move(joined->packets);
            whole = std::move(joined);
        }
        if (packet) {
            takeTransport(*packet, frame.time, carriers);
        } else {
            ++m_counts.others;
        }
    } catch (const MalformedPacket&) {
        ++m_malformed;
    } catch (const Tins::exception_base&) {
        ++m_malformed;
    }
}

void CaptureReader::takeTransport(const IpPacket& packet, std::chrono::microseconds time, const Packets& carriers) {
    const auto* const octets = reinterpret_cast<const std::uint8_t*>(packet.payload.data());
    const auto size = static_cast<std::uint32_t>(packet.payload.size());
    if (packet.protocol == IpPacket::kUdp) {
        const Tins::UDP udp(octets, size);
        const std::string_view payload = packet.payload.substr(udp.header_size());
        takeDatagram({udp.sport(), udp.dport(), packet.source, packet.destination}, payload, time, carriers);
    } else if (packet.protocol == IpPacket::kTcp) {
        const Tins::TCP tcp(octets, size);
        m_streams.take(tcp, {tcp.sport(), tcp.dport(), packet.source, packet.destination}, time, carriers);
    } else {
        ++m_counts.others;
    }
}

void CaptureReader::takeDatagram(const Flow& flow, std::string_view payload, std::chrono::microseconds time,
                                 const Packets& carriers) {
    const DatagramKind kind = datagramKind(payload);
    const bool isMessage = kind == DatagramKind::Message;
    const bool isSip = isMessage || (flow.hasSipPort() && kind != DatagramKind::Media) || m_pairs.has(flow);
    if (!isSip) {
        ++m_counts.datagrams;
    } else if (kind == DatagramKind::KeepAlive) {
        ++m_counts.keepAlives;
    } else if (kind == DatagramKind::Encrypted) {
        ++m_counts.encrypted;
    } else {
        payload.remove_prefix(std::min(payload.find_first_not_of("\r\n"), payload.size()));
        if (isMessage) {
            m_pairs.add(flow);
        }
        m_found.push_back({flow.origin(time, "UDP"), std::string(payload), carriers});
    }
}

ReadMessage CaptureReader::parsed(Found found) {
    ReadMessage read;
    read.file = m_input.name();
    read.isLive = m_input.isLive();
    read.index = m_index++;
    read.origin = std::move(found.origin);
    read.packets = std::move(found.packets);
    const std::size_t taken = read.parse(found.bytes);
    read.unread = found.bytes.size() - taken;
    if (!read.isRefused()) {
        found.bytes.resize(taken);
    }
    read.text = std::move(found.bytes);
    return read;
}

/** Returns the error that ended the capture, empty if there is none. */
const std::string& CaptureReader::damage() const {
    return m_input.damage().empty() ? m_capture->damage() : m_input.damage();
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
    note(m_unsupported, "packet of a link type that is not supported", "packets of link types that are not supported");
    note(m_keeper.refused(), "packet too many to be held; its message is not written whole",
         "packets too many to be held; their messages are not written whole");
    note(m_fragments.unfinished(), "IP datagram lacks fragments", "IP datagrams lack fragments");
    note(m_streams.gaps(), "gap in a TCP stream, what it cuts off is read as far as it is there",
         "gaps in TCP streams, what they cut off is read as far as it is there");
    if (!damage().empty()) {
        notes.push_back("the capture is damaged after packet " + std::to_string(m_packets) + " (" + damage() +
                        "); what comes before it was read");
    } else if (m_index == 0) {
        notes.push_back("no SIP message in " + counted(m_packets, "packet", "packets") +
                        "; SIP over TLS can't be read");
    }
    return notes;
}

std::string CaptureReader::passedOver() const {
    const TcpStreams::Counts& tcp = m_streams.counts();
    std::string text;
    const auto add = [&text](std::size_t count, const char* one, const char* many) {
        if (count > 0) {
            text += (text.empty() ? "" : ", ") + counted(count, one, many);
        }
    };
    add(m_counts.keepAlives + tcp.keepAlives, "keep-alive", "keep-alives");
    add(m_counts.encrypted, "datagram of DTLS", "datagrams of DTLS");
    add(tcp.encrypted, "stream of TLS", "streams of TLS");
    add(m_counts.datagrams, "datagram without SIP", "datagrams without SIP");
    add(tcp.others, "TCP stream without SIP", "TCP streams without SIP");
    add(m_counts.others, "packet that is neither UDP nor TCP", "packets that are neither UDP nor TCP");
    return text;
}

Outcome CaptureReader::outcome() const {
    if (!damage().empty() || (m_index == 0 && m_unsupported > 0)) {
        return Outcome::Failed;
    }
    return m_index == 0 ? Outcome::Refused : Outcome::Valid;
}
