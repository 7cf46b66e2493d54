#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/** Puts the bytes of one direction of a TCP stream in order: segments come early, late, twice, and overlap; of bytes that
    come twice the first stand. */
class SegmentQueue {
public:
    /** `next` is the sequence number of the first byte to come. */
    explicit SegmentQueue(std::uint32_t next) : m_next(kStart + next) {}

    /** Takes a segment; what lies too far from the next byte to belong to the stream's window is dropped. */
    void put(std::uint32_t sequence, std::string_view bytes);

    /** The bytes that follow those taken before, as far as they are there. */
    std::string take();

    /** Whether segments wait for one in front of them. */
    bool isWaiting() const { return !m_waiting.empty(); }
    /** Whether so many wait that the one in front of them will hardly come. */
    bool isFull() const;
    /** Whether an acknowledgement says that the receiver has the first of those that wait. */
    bool isWaitingAcknowledged(std::uint32_t acknowledgement) const;
    /** Goes on with the first of those that wait. */
    void skipGap();

private:
    /** Sequence numbers come round, positions don't: the one of that number that is nearest to m_next. [RFC 9293 3.4] */
    std::uint64_t position(std::uint32_t sequence) const;

    static constexpr std::uint64_t kStart = std::uint64_t{1} << 32; ///< So that none is in front of 0.

    std::uint64_t m_next;
    std::map<std::uint64_t, std::string> m_waiting; ///< By position; all behind m_next once take() was called.
    std::size_t m_held = 0;                         ///< Bytes of all that wait.
};
