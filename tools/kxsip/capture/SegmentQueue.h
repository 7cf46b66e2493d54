#pragma once

#include "tools/kxsip/capture/Packet.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/** Puts the bytes of one direction of a TCP stream in order. Segments may come early, late or twice, and may overlap;
    of bytes that come twice, the first are used. */
class SegmentQueue {
public:
    /** Bytes that follow each other, and the packets that carried them if they are kept. */
    struct Segment {
        std::string bytes;
        Packets carriers;
    };

    /** `next` is the sequence number of the first byte of the stream. */
    explicit SegmentQueue(std::uint32_t next) : m_next(kStart + next) {}

    /** Takes a segment. A segment that is too far from the next byte to be in the stream's window is dropped. */
    void put(std::uint32_t sequence, std::string_view bytes, const Packets& carriers);

    /** Returns available bytes that follow those returned before, or nothing if there is a gap. */
    std::optional<Segment> take();

    /** Whether segments wait for a missing segment before them. */
    bool isWaiting() const { return !m_waiting.empty(); }
    /** Whether so many segments wait that the missing one is not expected any more. */
    bool isFull() const;
    /** Whether the acknowledgement shows that the receiver has bytes of the first waiting segment. */
    bool isWaitingAcknowledged(std::uint32_t acknowledgement) const;
    /** Skips the missing bytes before the first waiting segment. There must be one. */
    void skipGap();

private:
    /** Returns the position for a sequence number. Sequence numbers wrap around, positions do not: it is the position
        nearest to m_next. [RFC 9293 3.4] */
    std::uint64_t position(std::uint32_t sequence) const;

    static constexpr std::uint64_t kStart = std::uint64_t{1} << 32; ///< So that no position is below 0.

    std::uint64_t m_next;
    std::map<std::uint64_t, Segment> m_waiting; ///< By position; all after m_next once take() returned nothing.
    std::size_t m_held = 0;                     ///< Bytes of all waiting segments.
};
