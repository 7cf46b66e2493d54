#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** Cuts messages out of the bytes of a connection, in whatever pieces these come. [RFC 3261 18.3]

    Looks at each byte once for the empty line; the length of the body is what the library says that Content-Length
    says, so that both agree where the next message begins. */
class MessageCutter {
public:
    static constexpr std::size_t kLargest = 65536; // head and body together

    void append(std::string_view bytes) { m_bytes.append(bytes); }

    /** The next whole message, the empty lines in front of it aside; none until more bytes come. Throws
        std::length_error for one that is too large: nobody knows where the next one would begin. */
    std::optional<std::string> next();

private:
    bool findBody();

    std::string m_bytes;
    std::size_t m_scanned = 0;  // the empty line is not in front of this
    bool m_isLineEmpty = false; // as far as it was scanned
    std::size_t m_length = 0;   // of the message, once its head is whole
};
