#include "tools/kxsip/capture/TcpStreams.h"

#include "tools/kxsip/capture/Datagram.h"

#include <tins/rawpdu.h>

namespace {

constexpr std::size_t kMostStreams = 65536;

bool has(const Tins::TCP& segment, unsigned flag) {
    return (segment.flags() & flag) != 0;
}

} // namespace

void TcpStreams::take(const Tins::TCP& segment, const Flow& flow, std::chrono::microseconds time,
                      const Packets& carriers) {
    if (has(segment, Tins::TCP::SYN)) {
        takeSyn(flow, time, segment);
    } else {
        takeData(flow, time, segment, carriers);
    }
    if (has(segment, Tins::TCP::ACK)) {
        takeAck(flow.reversed(), time, segment);
    }
    if (has(segment, Tins::TCP::RST)) {
        close(flow);
        close(flow.reversed());
    }
}

TcpStreams::Stream& TcpStreams::open(const Flow& flow, std::chrono::microseconds time, std::uint32_t first,
                                     bool isWhole) {
    if (m_streams.size() == kMostStreams) {
        close(Flow(m_order.front()));
    }
    const auto place = m_order.insert(m_order.end(), flow);
    Stream stream{flow, time, first, SegmentQueue(first), StreamFramer(isWhole), place};
    return m_streams.emplace(flow, std::move(stream)).first->second;
}

/** A new stream may have the addresses and ports of an earlier one. The same SYN may come twice. */
void TcpStreams::takeSyn(const Flow& flow, std::chrono::microseconds time, const Tins::TCP& segment) {
    const std::uint32_t first = segment.seq() + 1;
    const auto known = m_streams.find(flow);
    if (known == m_streams.end() || known->second.first != first) {
        close(flow);
        open(flow, time, first, true);
    }
}

void TcpStreams::takeData(const Flow& flow, std::chrono::microseconds time, const Tins::TCP& segment,
                          const Packets& carriers) {
    const auto* const raw = dynamic_cast<const Tins::RawPDU*>(segment.inner_pdu());
    const auto known = m_streams.find(flow);
    if (raw == nullptr || (known == m_streams.end() && raw->payload().empty())) {
        return;
    }
    Stream& stream = known == m_streams.end() ? open(flow, time, segment.seq(), false) : known->second;
    m_order.splice(m_order.end(), m_order, stream.place);
    stream.time = time;
    const std::string_view bytes(reinterpret_cast<const char*>(raw->payload().data()), raw->payload().size());
    judge(stream, bytes);
    stream.segments.put(segment.seq(), bytes, carriers);
    read(stream);
    while (stream.segments.isFull()) {
        skipGap(stream);
    }
    if (has(segment, Tins::TCP::FIN) && !stream.segments.isWaiting()) {
        cutOff(stream);
    }
}

void TcpStreams::takeAck(const Flow& flow, std::chrono::microseconds time, const Tins::TCP& segment) {
    const auto known = m_streams.find(flow);
    while (known != m_streams.end() && known->second.segments.isWaitingAcknowledged(segment.ack_seq())) {
        known->second.time = time;
        skipGap(known->second);
    }
}

void TcpStreams::finish() {
    while (!m_streams.empty()) {
        close(Flow(m_streams.begin()->first));
    }
}

void TcpStreams::close(const Flow& flow) {
    const auto known = m_streams.find(flow);
    if (known == m_streams.end()) {
        return;
    }
    Stream& stream = known->second;
    while (stream.segments.isWaiting()) {
        skipGap(stream);
    }
    cutOff(stream);
    m_counts.encrypted += stream.content == Content::Encrypted ? 1U : 0U;
    m_counts.others += stream.content == Content::Unknown && stream.hasBytes ? 1U : 0U;
    m_order.erase(stream.place);
    m_streams.erase(known);
}

/** Decides what the stream carries, before the segment is read. */
void TcpStreams::judge(Stream& stream, std::string_view segment) {
    const bool isFirst = !stream.hasBytes;
    stream.hasBytes = stream.hasBytes || !segment.empty();
    const bool isSip = stream.flow.hasSipPort() || m_pairs.has(stream.flow);
    if (isFirst && datagramKind(segment) == DatagramKind::Encrypted) {
        stream.content = Content::Encrypted;
    } else if (isSip && stream.content != Content::Encrypted) {
        stream.framer.setSip();
        if (!segment.empty() && stream.framer.isBetween() && datagramKind(segment) == DatagramKind::KeepAlive) {
            ++m_counts.keepAlives;
        }
    }
}

/** A message that began before the gap is cut off. */
void TcpStreams::skipGap(Stream& stream) {
    ++m_gaps;
    cutOff(stream);
    stream.segments.skipGap();
    read(stream);
}

void TcpStreams::read(Stream& stream) {
    while (const std::optional<SegmentQueue::Segment> segment = stream.segments.take()) {
        stream.framer.feed(segment->bytes);
        stream.carriers.add(segment->bytes.size(), segment->carriers);
        while (std::optional<StreamFramer::Message> message = stream.framer.next()) {
            found(stream, std::move(*message));
        }
        stream.carriers.dropBefore(stream.framer.begin());
    }
}

void TcpStreams::cutOff(Stream& stream) {
    if (std::optional<StreamFramer::Message> message = stream.framer.cutOff()) {
        found(stream, std::move(*message));
    }
    stream.carriers.dropBefore(stream.framer.begin());
}

void TcpStreams::found(Stream& stream, StreamFramer::Message message) {
    stream.content = Content::Sip;
    m_sink({stream.flow, stream.time, std::move(message.bytes), stream.carriers.find(message.begin, message.end)});
}
