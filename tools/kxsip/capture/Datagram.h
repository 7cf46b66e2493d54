#pragma once

#include <string_view>

/** What the payload of a UDP datagram, or of a TCP segment between two messages, is. */
enum class DatagramKind {
    Message,   ///< Its first line, after any line ends, looks like a start line.
    KeepAlive, ///< Nothing, only line ends and NULs, at most four bytes, or STUN.
    Encrypted, ///< A record of TLS or DTLS.
    Media,     ///< RTP or RTCP, by its first byte: text does not begin so.
    Other,     ///< If its sender sends SIP, a message that is broken.
};

DatagramKind datagramKind(std::string_view payload);
