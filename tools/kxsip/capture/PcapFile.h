#pragma once

#include "tools/kxsip/capture/CaptureFile.h"

struct pcap;

/** Reads a pcap file with libpcap. */
class PcapFile final : public CaptureFile {
public:
    /** The input must outlive this object. Throws CaptureError, also for a link type that IpPacket does not know. */
    explicit PcapFile(Input& input);

    std::optional<Frame> next() override;

private:
    struct Closer {
        void operator()(pcap* capture) const;
    };

    std::unique_ptr<pcap, Closer> m_capture;
};
