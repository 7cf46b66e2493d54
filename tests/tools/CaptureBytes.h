#pragma once

#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>
#include <tins/udp.h>

#include <cstdint>
#include <string>
#include <string_view>

/** The bytes of a capture file. Frames are a millisecond apart. */
class CaptureBytes {
public:
    static constexpr int kRaw = 101;

    explicit CaptureBytes(int linkType = kRaw, bool isNext = false) : m_isNext(isNext) {
        if (isNext) {
            number(0x0A0D0D0A), number(28), number(0x1A2B3C4D), number(1), number(~0U), number(~0U), number(28);
            number(1), number(20), number(static_cast<std::uint32_t>(linkType)), number(0), number(20);
        } else {
            number(0xA1B2C3D4), number(0x00040002), number(0), number(0), number(65535);
            number(static_cast<std::uint32_t>(linkType));
        }
    }

    CaptureBytes& add(std::string_view frame, std::size_t cut = 0) {
        const auto kept = static_cast<std::uint32_t>(frame.size() - cut);
        const auto size = static_cast<std::uint32_t>(frame.size());
        const std::uint32_t padding = (4 - kept % 4) % 4;
        m_time += 1000;
        if (m_isNext) {
            number(6), number(32 + kept + padding), number(0), number(0), number(m_time), number(kept), number(size);
            m_bytes.append(frame.substr(0, kept)).append(padding, '\0');
            number(32 + kept + padding);
        } else {
            number(m_seconds), number(m_time), number(kept), number(size);
            m_bytes.append(frame.substr(0, kept));
        }
        return *this;
    }
    /** Lets time pass before the next frame. Not for pcapng. */
    CaptureBytes& wait(std::uint32_t seconds) {
        m_seconds += seconds;
        return *this;
    }
    CaptureBytes& add(Tins::PDU&& packet) { return add(bytesOf(packet)); }

    static std::string bytesOf(Tins::PDU& packet) {
        const Tins::PDU::serialization_type bytes = packet.serialize();
        return {bytes.begin(), bytes.end()};
    }

    const std::string& bytes() const { return m_bytes; }

private:
    void number(std::uint32_t value) { m_bytes.append(reinterpret_cast<const char*>(&value), sizeof value); }

    bool m_isNext;
    std::uint32_t m_seconds = 1000;
    std::uint32_t m_time = 0; ///< Microseconds after those.
    std::string m_bytes;
};
