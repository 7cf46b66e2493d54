#include "tools/kxsip/capture/TcpStreams.h"

#include <tins/rawpdu.h>

namespace {

constexpr std::size_t kMostStreams = 65536;

bool has(const Tins::TCP& segment, unsigned flag) {
    return (segment.flags() & flag) != 0;
}

} // namespace

void TcpStreams::take(const Tins::TCP& segment, const Origin& origin, const Packets& carriers) {
    const Key key(origin.source, origin.destination);
    const Key reverse(origin.destination, origin.source);
    if (has(segment, Tins::TCP::SYN)) {
        takeSyn(key, segment, origin);
    } else {
        takeData(key, segment, origin, carriers);
    }
    if (has(segment, Tins::TCP::ACK)) {
        takeAck(reverse, segment, origin);
    }
    if (has(segment, Tins::TCP::RST)) {
        close(key);
        close(reverse);
    }
}

TcpStreams::Stream& TcpStreams::open(const Key& key, const Origin& origin, std::uint32_t first) {
    if (m_streams.size() == kMostStreams) {
        close(Key(m_order.front()));
    }
    const auto place = m_order.insert(m_order.end(), key);
    return m_streams.emplace(key, Stream{origin, first, SegmentQueue(first), {}, {}, place}).first->second;
}

/** A new stream may have the addresses and ports of an earlier one. The same SYN may come twice. */
void TcpStreams::takeSyn(const Key& key, const Tins::TCP& segment, const Origin& origin) {
    const std::uint32_t first = segment.seq() + 1;
    const auto known = m_streams.find(key);
    if (known == m_streams.end() || known->second.first != first) {
        close(key);
        open(key, origin, first);
    }
}

void TcpStreams::takeData(const Key& key, const Tins::TCP& segment, const Origin& origin, const Packets& carriers) {
    const auto* const raw = dynamic_cast<const Tins::RawPDU*>(segment.inner_pdu());
    const auto known = m_streams.find(key);
    if (raw == nullptr || (known == m_streams.end() && raw->payload().empty())) {
        return;
    }
    Stream& stream = known == m_streams.end() ? open(key, origin, segment.seq()) : known->second;
    m_order.splice(m_order.end(), m_order, stream.place);
    stream.origin.time = origin.time;
    stream.segments.put(segment.seq(), {reinterpret_cast<const char*>(raw->payload().data()), raw->payload().size()},
                        carriers);
    read(stream);
    while (stream.segments.isFull()) {
        skipGap(stream);
    }
    if (has(segment, Tins::TCP::FIN) && !stream.segments.isWaiting()) {
        cutOff(stream);
    }
}

void TcpStreams::takeAck(const Key& key, const Tins::TCP& segment, const Origin& origin) {
    const auto known = m_streams.find(key);
    while (known != m_streams.end() && known->second.segments.isWaitingAcknowledged(segment.ack_seq())) {
        known->second.origin.time = origin.time;
        skipGap(known->second);
    }
}

void TcpStreams::finish() {
    while (!m_streams.empty()) {
        close(Key(m_streams.begin()->first));
    }
}

void TcpStreams::close(const Key& key) {
    const auto known = m_streams.find(key);
    if (known == m_streams.end()) {
        return;
    }
    while (known->second.segments.isWaiting()) {
        skipGap(known->second);
    }
    cutOff(known->second);
    m_order.erase(known->second.place);
    m_streams.erase(known);
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
    m_sink(stream.origin, std::move(message.bytes), stream.carriers.find(message.begin, message.end));
}
