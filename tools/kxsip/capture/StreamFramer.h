#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** Cuts one direction of a byte stream into messages. A message is its header section and as many bytes as its
    Content-Length says [RFC 3261 18.3]; line ends between messages are keep-alives [RFC 5626 3.5.1]. Other bytes before
    a line that looks like a start line are dropped. Holds at most a mebibyte. */
class StreamFramer {
public:
    void feed(std::string_view bytes);

    /** Returns the next complete message, or nothing if there is none yet. To be called until it returns nothing. */
    std::optional<std::string> next();

    /** For a message whose end will not come: returns the bytes of the message so far, or nothing if none has begun.
        Drops all bytes that were fed. */
    std::optional<std::string> cutOff();

private:
    bool findMessage();
    bool findHeaderEnd();
    void drop(std::size_t count);
    std::string_view unread() const { return std::string_view(m_bytes).substr(m_begin); }

    std::string m_bytes;
    std::size_t m_begin = 0;   ///< Beginning of the bytes that were not returned yet.
    std::size_t m_scanned = 0; ///< Offset from m_begin up to which line ends were searched.
    std::size_t m_line = 0;    ///< Offset from m_begin of the current line.
    bool m_inMessage = false;
    bool m_midLine = false;   ///< The line at m_begin began in dropped bytes and is dropped too.
    std::size_t m_length = 0; ///< Length of the message; 0 until its header section is complete.
};
