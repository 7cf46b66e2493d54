#pragma once

#include "tools/kxsip/MessageSource.h"
#include "tools/kxsip/capture/CaptureFile.h"
#include "tools/kxsip/capture/Fragments.h"
#include "tools/kxsip/capture/TcpStreams.h"

#include <deque>

/** Finds the messages of a capture, on any port. A UDP datagram is a message if its first line, after any line ends,
    looks like a start line. A StreamFramer cuts TCP streams. Packets that can't be read are counted and skipped. */
class CaptureReader final : public MessageSource {
public:
    /** The input must outlive the reader. With `keepsPackets`, the messages have their packets; at most 512 MiB of packets
        are held at a time. Throws CaptureError. */
    CaptureReader(Input& input, bool keepsPackets);

    std::optional<ReadMessage> next() override;
    std::vector<std::string> notes() const override;
    Outcome outcome() const override;

private:
    struct Found {
        Origin origin;
        std::string bytes;
        Packets packets;
    };

    void take(const Frame& frame);
    Packets kept(const Frame& frame);
    void take(IpPacket packet, std::chrono::microseconds time, const Packets& carriers);
    void takeTransport(const Tins::PDU& transport, Origin origin, const Packets& carriers);
    void takeWhole(const Fragments::Whole& datagram, std::uint8_t protocol, const Origin& origin);
    ReadMessage parsed(Found found);

    const Input& m_input;
    CaptureFile m_capture;
    Fragments m_fragments;
    TcpStreams m_streams;
    std::deque<Found> m_found;
    bool m_keepsPackets;
    std::shared_ptr<std::size_t> m_held; ///< Bytes of the packets that were kept and still exist.
    std::size_t m_notKept = 0;
    bool m_ended = false;
    std::size_t m_index = 0;
    std::size_t m_packets = 0;
    std::size_t m_malformed = 0;
    std::size_t m_cut = 0;
};
