#pragma once

#include "tools/kxsip/capture/PacketLog.h"
#include "tools/kxsip/capture/SegmentQueue.h"
#include "tools/kxsip/capture/SipPairs.h"
#include "tools/kxsip/capture/StreamFramer.h"

#include <tins/tcp.h>

#include <functional>
#include <list>
#include <map>
#include <utility>

/** Puts the segments of TCP streams in order and cuts the streams into messages. Streams that began before the capture
    are read from their first captured segment. If a segment is missing, reading continues after the gap in three cases:
    the other side has acknowledged bytes after the gap (the segment was not lost, only not captured); more than 256 KiB
    or 1,024 segments wait; or the connection is reset or opened again, or the capture ends. At most 65,536 streams are
    kept, one for each direction of a connection; for a new one, that which was idle longest is given up. */
class TcpStreams {
public:
    /** A message that is found. One with missing bytes is cut off before them. */
    struct Found {
        const Flow& flow;
        std::chrono::microseconds time; ///< Of its last segment.
        std::string bytes;
        Packets packets; ///< That carried it, if they are kept.
    };
    using Sink = std::function<void(Found)>;

    /** What was passed over. */
    struct Counts {
        std::size_t keepAlives = 0; ///< Between messages.
        std::size_t encrypted = 0;  ///< Streams of TLS.
        std::size_t others = 0;     ///< Streams without a message.
    };

    /** A stream of the pairs, or on a port for SIP, is known to be SIP. `pairs` must outlive this object. */
    TcpStreams(const SipPairs& pairs, Sink sink) : m_pairs(pairs), m_sink(std::move(sink)) {}

    /** `carriers` are the packets that carried the segment, if they are kept. */
    void take(const Tins::TCP& segment, const Flow& flow, std::chrono::microseconds time, const Packets& carriers);
    /** No more segments come. */
    void finish();

    /** Returns the number of gaps. */
    std::size_t gaps() const { return m_gaps; }
    /** Complete after `finish`. */
    const Counts& counts() const { return m_counts; }

private:
    enum class Content { Unknown, Sip, Encrypted };
    struct Stream {
        Flow flow;
        std::chrono::microseconds time; ///< Of the last segment.
        std::uint32_t first = 0;
        SegmentQueue segments;
        StreamFramer framer;
        std::list<Flow>::iterator place; ///< In m_order.
        PacketLog carriers = {};
        Content content = Content::Unknown; ///< Sip once there was a message.
        bool hasBytes = false;
    };
    using Streams = std::map<Flow, Stream>;

    Stream& open(const Flow& flow, std::chrono::microseconds time, std::uint32_t first, bool isWhole);
    void takeSyn(const Flow& flow, std::chrono::microseconds time, const Tins::TCP& segment);
    void takeData(const Flow& flow, std::chrono::microseconds time, const Tins::TCP& segment, const Packets& carriers);
    void takeAck(const Flow& flow, std::chrono::microseconds time, const Tins::TCP& segment);
    void close(const Flow& flow);
    void judge(Stream& stream, std::string_view segment);
    void skipGap(Stream& stream);
    void read(Stream& stream);
    void cutOff(Stream& stream);
    void found(Stream& stream, StreamFramer::Message message);

    const SipPairs& m_pairs;
    Sink m_sink;
    Streams m_streams;
    std::list<Flow> m_order; ///< The keys of all streams; that with the latest data is last.
    std::size_t m_gaps = 0;
    Counts m_counts;
};
