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
    /** The input must outlive the reader. Throws CaptureError. */
    explicit CaptureReader(Input& input);

    std::optional<ReadMessage> next() override;
    std::vector<std::string> notes() const override;
    Outcome outcome() const override;

private:
    struct Found {
        Origin origin;
        std::string bytes;
    };

    void take(const Frame& frame);
    void take(IpPacket packet, std::chrono::microseconds time);
    void takeTransport(const Tins::PDU& transport, Origin origin);
    void takeWhole(const std::string& datagram, std::uint8_t protocol, const Origin& origin);
    ReadMessage parsed(const Found& found);

    const Input& m_input;
    CaptureFile m_capture;
    Fragments m_fragments;
    TcpStreams m_streams;
    std::deque<Found> m_found;
    bool m_ended = false;
    std::size_t m_index = 0;
    std::size_t m_packets = 0;
    std::size_t m_malformed = 0;
    std::size_t m_cut = 0;
};
