#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** Cuts the bytes of a connection, which come in pieces of any size, into messages. [RFC 3261 18.3]

    Searches each byte once for the empty line. The library parses Content-Length, so that library and cutter agree
    where the next message begins. */
class MessageCutter {
public:
    static constexpr std::size_t kLargest = 65536; // bytes of head and body

    void append(std::string_view bytes) { m_bytes.append(bytes); }

    /** Returns the next complete message, without the empty lines before it, or nothing until more bytes come. Throws
        std::length_error for a message that is too large, since the beginning of the next one is then unknown. */
    std::optional<std::string> next();

private:
    bool findBody();

    std::string m_bytes;
    std::size_t m_scanned = 0;  // there is no empty line before this position
    bool m_isLineEmpty = false; // the current line, as far as it was scanned
    std::size_t m_length = 0;   // of the message; 0 until its head is complete
};
