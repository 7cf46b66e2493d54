#pragma once

#include "tools/kxsip/capture/CaptureFile.h"
#include "tools/kxsip/capture/Packet.h"

/** Makes the packets of a capture's frames, if they are wanted. Holds at most 512 MiB of packets that someone uses. */
class PacketKeeper {
public:
    explicit PacketKeeper(bool isWanted) : m_isWanted(isWanted) {}

    /** Returns a packet with the frame; none if packets are not wanted, or too many are held. */
    Packets keep(const Frame& frame, std::size_t number) {
        if (!m_isWanted) {
            return {};
        }
        if (*m_held + frame.bytes.size() > kMostHeld) {
            ++m_refused;
            return {};
        }
        *m_held += frame.bytes.size();
        const auto release = [held = m_held](const Packet* packet) {
            *held -= packet->bytes.size();
            delete packet;
        };
        return {std::shared_ptr<const Packet>(
            new Packet{frame.time, frame.linkType, frame.length, number, std::string(frame.bytes)}, release)};
    }

    /** Returns the number of packets that were not made since too many are held. */
    std::size_t refused() const { return m_refused; }

private:
    static constexpr std::size_t kMostHeld = 512U << 20;

    bool m_isWanted;
    std::shared_ptr<std::size_t> m_held = std::make_shared<std::size_t>(0); ///< Bytes of the packets that exist.
    std::size_t m_refused = 0;
};
