#pragma once

#include "tools/kxsip/MessageSource.h"
#include "tools/kxsip/capture/CaptureFile.h"
#include "tools/kxsip/capture/Fragments.h"
#include "tools/kxsip/capture/PacketKeeper.h"
#include "tools/kxsip/capture/SipPairs.h"
#include "tools/kxsip/capture/TcpStreams.h"

#include <deque>

/** Finds the messages of a capture, on any port. A UDP datagram is a message if its first line, after any line ends,
    looks like a start line. On a port for SIP, or between two endpoints that have exchanged SIP, others are messages
    too, so that the library can refuse them, except keep-alives, encrypted datagrams and, on such a port, media. A
    StreamFramer cuts TCP streams. Packets that can't be read, or have no SIP, are counted and skipped. */
class CaptureReader final : public MessageSource {
public:
    /** The input must outlive the reader. With `keepsPackets`, the messages have their packets. Throws CaptureError. */
    CaptureReader(Input& input, bool keepsPackets);

    void skipUnless(std::function<bool(std::string_view)> mayBeWanted) override {
        m_mayBeWanted = std::move(mayBeWanted);
    }
    std::optional<ReadMessage> next() override;
    std::vector<std::string> notes() const override;
    std::string passedOver() const override;
    Outcome outcome() const override;

private:
    struct Found {
        Origin origin;
        std::string bytes;
        Packets packets;
    };
    /** What was passed over. */
    struct Counts {
        std::size_t keepAlives = 0;
        std::size_t encrypted = 0;
        std::size_t datagrams = 0; ///< Without SIP.
        std::size_t others = 0;    ///< Packets that are neither UDP nor TCP.
    };

    void take(const Frame& frame);
    void takeTransport(const IpPacket& packet, std::chrono::microseconds time, const Packets& carriers);
    void takeDatagram(const Flow& flow, std::string_view payload, std::chrono::microseconds time,
                      const Packets& carriers);
    bool findNext();
    ReadMessage parsed(Found found);
    const std::string& damage() const;

    const Input& m_input;
    std::unique_ptr<CaptureFile> m_capture;
    PacketKeeper m_keeper;
    Fragments m_fragments;
    SipPairs m_pairs;
    TcpStreams m_streams;
    std::deque<Found> m_found;
    std::function<bool(std::string_view)> m_mayBeWanted; ///< Null for all.
    bool m_ended = false;
    std::size_t m_index = 0;
    std::size_t m_packets = 0;
    std::size_t m_malformed = 0;
    std::size_t m_cut = 0;
    std::size_t m_unsupported = 0; ///< Packets of unknown link types.
    Counts m_counts;
};
