#pragma once

#include "tools/kxsip/capture/Packet.h"

#include <memory>
#include <set>
#include <string>

/** Writes packets into a capture file: a pcapng file if the name ends in ".pcapng", else a pcap file, which can have
    one link type only. A packet that carried several messages comes with each of them and is written once. */
class PacketWriter {
public:
    /** Throws CaptureError. */
    explicit PacketWriter(const std::string& name);
    ~PacketWriter();
    PacketWriter(const PacketWriter&) = delete;
    PacketWriter& operator=(const PacketWriter&) = delete;

    /** Writes those of the packets that were not written yet, in the order of their numbers. Throws CaptureError. */
    void write(const Packets& packets);
    /** Completes the file. To be called after the last packet. Throws CaptureError. */
    void finish();

    /** A kind of capture file. */
    class Format;

private:
    bool isNew(const std::shared_ptr<const Packet>& packet);

    std::unique_ptr<Format> m_format;
    /// The packets that were written and may come again, since someone still holds them; and some that may not.
    std::set<std::weak_ptr<const Packet>, std::owner_less<>> m_written;
    std::size_t m_tidyAt = 1024; ///< Size of m_written at which those that no one holds are removed.
};
