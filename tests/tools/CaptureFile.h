#pragma once

#include "tests/tools/ToolRun.h"

#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>
#include <tins/udp.h>

#include <cstdint>

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

inline Tins::IP datagram(const std::string& payload, const char* from = "192.0.2.1", const char* to = "192.0.2.2") {
    return Tins::IP(to, from) / Tins::UDP(5060, 40000) / Tins::RawPDU(payload);
}

/** The shortest message that the library accepts. */
inline std::string sipMessage(const std::string& start, const std::string& more, const std::string& body = "") {
    return start + "\r\n" + kDialog + more + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

inline std::string sipOptions(int number) {
    const std::string text = std::to_string(number);
    return sipMessage("OPTIONS sip:" + text + "@d SIP/2.0", "CSeq: " + text + " OPTIONS\r\n");
}

/** The Request-URIs of the messages that the tool finds, "!" for one that is refused. */
inline std::string found(const ToolRun& run) {
    std::string text;
    for (const nlohmann::json& message : run.json()) {
        text += (text.empty() ? "" : " ") + (message["uri"].is_string() ? message["uri"].get<std::string>() : "!");
    }
    return text;
}

/** Requests of which found() shows "sip:1@d", "sip:2@d" and "sip:3@d". */
namespace requests {
inline const std::string kOne = sipOptions(1);
inline const std::string kTwo = sipOptions(2);
inline const std::string kBody =
    sipMessage("OPTIONS sip:3@d SIP/2.0", "CSeq: 3 OPTIONS\r\nContent-Type: a/b\r\n", "0123456789");
} // namespace requests

/** A piece of a TCP stream from 192.0.2.1; `at` counts from the first byte of the stream. */
struct Piece {
    std::size_t at;
    std::string bytes;
    unsigned flags = Tins::TCP::ACK;
};

inline Tins::IP segment(const Piece& piece, std::uint32_t first) {
    Tins::TCP tcp(5060, 40000);
    tcp.seq(first + static_cast<std::uint32_t>(piece.at));
    tcp.flags(static_cast<Tins::small_uint<12>>(static_cast<std::uint16_t>(piece.flags)));
    Tins::IP ip = Tins::IP("192.0.2.2", "192.0.2.1") / tcp;
    return piece.bytes.empty() ? ip : ip / Tins::RawPDU(piece.bytes);
}

inline ToolRun showAll(const std::string& capture) {
    return kxsip("show --json", capture);
}

inline void put16(std::string& bytes, std::size_t at, std::size_t number) {
    bytes[at] = static_cast<char>(number >> 8);
    bytes[at + 1] = static_cast<char>(number);
}

/** Three fragments of an IPv4 packet without options. */
inline std::vector<std::string> fragments(Tins::IP packet) {
    packet.id(77);
    const std::string whole = CaptureBytes::bytesOf(packet);
    std::vector<std::string> result;
    for (const auto& [at, end] : {std::pair{0U, 64U}, std::pair{64U, 72U}, std::pair{72U, 1000U}}) {
        std::string bytes = whole.substr(0, 20) + whole.substr(20 + at, end - at);
        put16(bytes, 2, bytes.size());
        put16(bytes, 6, at / 8 + (end < whole.size() ? 0x2000 : 0));
        result.push_back(bytes);
    }
    return result;
}
