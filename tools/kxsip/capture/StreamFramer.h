#pragma once

#include "sipobject/messages/KxSipFramer.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** Cuts one direction of a captured byte stream into messages. A capture may lack bytes, so this class finds the
    beginning of the next message again: bytes before a line that looks like a start line are dropped. From there on
    KxSipFramer finds the end. Holds at most two mebibytes.

    In a stream that is known to be SIP, a message is expected where the stream begins and where a message ends. If the
    line there does not look like a start line, the text up to the next start line, or the message that it begins as far
    as it can be framed, is returned too, so that the library can refuse it. */
class StreamFramer {
public:
    struct Message {
        std::string bytes;
        std::size_t begin; ///< Number of bytes that were fed before it.
        std::size_t end;
    };

    /** `isWhole` says whether the first byte that is fed is the first of the stream. */
    explicit StreamFramer(bool isWhole) : m_isLost(!isWhole) {}

    /** The stream is known to be SIP. */
    void setSip() { m_isSip = true; }
    void feed(std::string_view bytes);

    /** Returns the next complete message, or nothing if there is none yet. Of a message that can't be framed, returns
        the header section. To be called until it returns nothing. */
    std::optional<Message> next();

    /** For a message whose end will not come: returns the bytes of the message so far, or nothing if none has begun.
        Drops all bytes that were fed. */
    std::optional<Message> cutOff();

    /** Returns the number of bytes that were fed before the next message, as far as it is known. */
    std::size_t begin() const { return m_inMessage ? m_messageBegin : m_position; }
    /** Whether all bytes that were fed belong to messages that were returned, or to none. */
    bool isBetween() const { return !m_inMessage && unread().empty(); }

private:
    static constexpr std::size_t kLargest = 1U << 20; // bytes, of the header section and of the body

    /** The result of a search for the beginning of a message. */
    struct Search {
        bool isFound = false;
        std::size_t refused = 0; ///< Number of bytes here that are no message and are to be returned.
    };

    Search findMessage();
    std::size_t loseLongLine();
    void dropFiller();
    bool keepsLines() const { return m_isSip && !m_isLost; }
    Message takeHere(std::size_t count);
    void drop(std::size_t count);
    std::string_view unread() const { return std::string_view(m_bytes).substr(m_begin); }

    KxSipFramer m_framer{KxSipFramer::Mode::Stream, {kLargest, kLargest}};
    std::string m_bytes;
    std::size_t m_begin = 0;        ///< Beginning of the bytes that were neither dropped nor given to m_framer.
    std::size_t m_position = 0;     ///< Number of all bytes that were fed before m_begin.
    std::size_t m_messageBegin = 0; ///< Value of m_position at the beginning of the message.
    std::size_t m_line = 0;         ///< Offset from m_begin of the first line that may begin a message.
    std::size_t m_scanned = 0;      ///< Offset from m_begin up to which a line end was searched.
    bool m_inMessage = false;
    bool m_isSip = false;
    bool m_isLost;          ///< It is not known whether a message begins at m_begin.
    bool m_midLine = false; ///< The line at m_begin began in dropped bytes and is dropped too.
};
