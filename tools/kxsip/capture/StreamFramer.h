#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** Cuts the messages out of one direction of a byte stream. A message ends with its header section and the bytes that
    its Content-Length tells [RFC 3261 18.3]; line ends between messages are keep-alives [RFC 5626 3.5.1]. What is no
    message passes up to a line that looks like a start line. Holds at most a mebibyte. */
class StreamFramer {
public:
    void feed(std::string_view bytes);

    /** The next whole message; nothing where there is none yet. To be called until it gives nothing. */
    std::optional<std::string> next();

    /** What stands of a message whose end will not come; nothing where none has begun. The next one begins afresh. */
    std::optional<std::string> cutOff();

private:
    bool findMessage();
    bool findHeaderEnd();
    void drop(std::size_t count);
    std::string_view unread() const { return std::string_view(m_bytes).substr(m_begin); }

    std::string m_bytes;
    std::size_t m_begin = 0;   ///< Where what is not handed on begins.
    std::size_t m_scanned = 0; ///< From m_begin: up to here there is no line end to be found.
    std::size_t m_line = 0;    ///< From m_begin: where the line begins that is looked at.
    bool m_inMessage = false;
    bool m_midLine = false;   ///< The line at m_begin began earlier and is of no use.
    std::size_t m_length = 0; ///< Of the message, once its header section is there; else 0.
};
