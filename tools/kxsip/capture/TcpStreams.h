#pragma once

#include "tools/kxsip/Origin.h"
#include "tools/kxsip/capture/PacketLog.h"
#include "tools/kxsip/capture/SegmentQueue.h"
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
    /** Called with each message that is found, and the packets that carried it if they are kept. A message with missing
        bytes is cut off before them. */
    using Sink = std::function<void(const Origin&, std::string message, Packets)>;

    explicit TcpStreams(Sink sink) : m_sink(std::move(sink)) {}

    /** `origin` has the time, source and destination of the segment, `carriers` the packets that carried it if they are
        kept. */
    void take(const Tins::TCP& segment, const Origin& origin, const Packets& carriers);
    /** No more segments come. */
    void finish();

    /** Returns the number of gaps. */
    std::size_t gaps() const { return m_gaps; }

private:
    using Key = std::pair<Endpoint, Endpoint>; // source, destination
    struct Stream {
        Origin origin; ///< Its time is that of the last segment.
        std::uint32_t first = 0;
        SegmentQueue segments;
        StreamFramer framer;
        PacketLog carriers;
        std::list<Key>::iterator place; ///< In m_order.
    };
    using Streams = std::map<Key, Stream>;

    Stream& open(const Key& key, const Origin& origin, std::uint32_t first);
    void takeSyn(const Key& key, const Tins::TCP& segment, const Origin& origin);
    void takeData(const Key& key, const Tins::TCP& segment, const Origin& origin, const Packets& carriers);
    void takeAck(const Key& key, const Tins::TCP& segment, const Origin& origin);
    void close(const Key& key);
    void skipGap(Stream& stream);
    void read(Stream& stream);
    void cutOff(Stream& stream);
    void found(Stream& stream, StreamFramer::Message message);

    Sink m_sink;
    Streams m_streams;
    std::list<Key> m_order; ///< The keys of all streams; that with the latest data is last.
    std::size_t m_gaps = 0;
};
