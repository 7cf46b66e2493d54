#pragma once

#include "tests/tools/CaptureBytes.h"
#include "tests/tools/ToolRun.h"

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
