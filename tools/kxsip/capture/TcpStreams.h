#pragma once

#include "tools/kxsip/Origin.h"
#include "tools/kxsip/capture/SegmentQueue.h"
#include "tools/kxsip/capture/StreamFramer.h"

#include <tins/tcp.h>

#include <functional>
#include <map>
#include <utility>

/** Puts the segments of TCP streams in order and cuts the messages out of them. Streams that began before the capture
    are read from the first segment that is there. Where a segment is missing, reading goes on behind the gap as soon as
    the other side has acknowledged what is behind it (it was not lost, only not captured), when 256 KiB wait, and at the
    end. */
class TcpStreams {
public:
    /** Takes a message as it is found; it is cut off where bytes are missing. */
    using Sink = std::function<void(const Origin&, std::string message)>;

    explicit TcpStreams(Sink sink) : m_sink(std::move(sink)) {}

    /** `origin` tells the segment's time, source and destination. */
    void take(const Tins::TCP& segment, const Origin& origin);
    /** No more segments come. */
    void finish();

    /** How often segments were missing. */
    std::size_t gaps() const { return m_gaps; }

private:
    using Key = std::pair<Endpoint, Endpoint>; // source, destination
    struct Stream {
        Origin origin; ///< Its time is that of the latest segment.
        std::uint32_t first = 0;
        SegmentQueue segments;
        StreamFramer framer;
    };
    using Streams = std::map<Key, Stream>;

    Stream& open(const Key& key, const Origin& origin, std::uint32_t first);
    void takeSyn(const Key& key, const Tins::TCP& segment, const Origin& origin);
    void takeData(const Key& key, const Tins::TCP& segment, const Origin& origin);
    void takeAck(const Key& key, const Tins::TCP& segment, const Origin& origin);
    void close(const Key& key);
    void skipGap(Stream& stream);
    void read(Stream& stream);
    void cutOff(Stream& stream);

    Sink m_sink;
    Streams m_streams;
    std::size_t m_gaps = 0;
};
