#pragma once

#include "sipobject/SipApi.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/** Finds the messages in the bytes that a connection delivers in pieces of any size. Each message is a start line, a
    header section and as many bytes of body as its Content-Length says. [RFC 3261 7.5, 18.3]

    The host has one framer for each direction that it receives, and calls `next` with the bytes that it read until the
    result is Incomplete. How the bytes are cut into pieces does not change what is found, and the cost is in proportion
    to their number. A message that lies in one piece is not copied. The bytes of an unfinished message, and no others,
    are kept.

    The end of the header section and the Content-Length are found as KxSipMessage finds them: in any letter case, as
    "l", folded. Where several lines say the same number, it counts; anything else is an error. Nothing that the bytes
    contain makes a function throw; std::bad_alloc leaves the framer as it was. Used by one thread at a time. */
class KX_SIP_API KxSipFramer {
public:
    /** How the transport delivers messages. */
    enum class Mode {
        Stream, ///< TCP, TLS: any number of bytes at a time. Content-Length is required. [RFC 3261 18.3]
        /** UDP, WebSocket: each input is one message, or a keep-alive. Without Content-Length the body is the rest of
            the input; bytes after the body are dropped. [RFC 3261 18.3, RFC 7118 4] */
        Messages
    };
    /** The largest message, in bytes. By default both parts may be as large as a UDP datagram. A limit on what a peer
        can make the framer keep: at most the sum of both. */
    struct Limits {
        std::size_t headerSection = 65536; ///< Of the start line, the header lines and the empty line.
        std::size_t body = 65536;          ///< Of the body. A Content-Length of 4294967295 or more is always too large.
    };
    enum class Kind {
        Incomplete, ///< The input is used up; more bytes are needed.
        Message,
        Ping, ///< A double CRLF. Over a stream it is to be answered with one CRLF. [RFC 5626 4.4.1]
        Pong, ///< The CRLF that answers a ping; see expectPong. [RFC 5626 4.4.1]
        Error ///< The input can't be framed.
    };
    /** Why the input can't be framed. */
    enum class Error {
        None,
        ContentLengthsDiffer,
        NoContentLength,       ///< Mode::Stream only.
        BadContentLength,      ///< It is not one decimal number.
        BodyTooLarge,          ///< Content-Length is above the limit.
        HeaderSectionTooLarge, ///< There is no empty line within the limit.
        Truncated              ///< Mode::Messages only: the input ends within the header section or the body.
    };
    /** What was found. */
    struct Frame {
        Kind kind = Kind::Incomplete;
        Error error = Error::None; ///< Not None only if the kind is Error.
        /** Of a message, all of it, without line ends before it. Of a keep-alive, its line ends. Of an error, the start
            line and header section, from which a host can make its answer; if their end was not found, what was read of
            them. Valid until the next call of next or reset, and no longer than the bytes of the input. */
        std::string_view bytes;
        std::size_t consumed = 0; ///< Number of bytes at the beginning of the input that need not be passed again.

        /** The text of the error, empty if there is none. Valid as long as the process. */
        KX_SIP_API std::string_view errorText() const;
    };

    explicit KxSipFramer(Mode mode = Mode::Stream) : KxSipFramer(mode, Limits()) {}
    KxSipFramer(Mode mode, const Limits& limits) : m_limits(limits), m_mode(mode) {}

    /** Returns the next frame of the input, which begins after the bytes that the calls before have consumed. Line ends
        before a message that are no keep-alive are skipped. [RFC 3261 7.5]

        After an error the beginning of the next message in a stream is unknown: each further call consumes all of its
        input and returns the same error, without bytes, until reset is called. */
    [[nodiscard]] Frame next(std::string_view input);

    /** To be called after the host has sent a ping: the next CRLF between messages is then a Pong at once. Otherwise a
        single CRLF is skipped, since the second half of a ping may follow. Has no effect in Mode::Messages, where an
        input that is only a CRLF always is a Pong. */
    void expectPong();

    /** The bytes of the unfinished message that were consumed so far. Valid until the next call of next or reset. */
    [[nodiscard]] std::string_view pending() const { return m_isReturned ? std::string_view() : m_kept; }

    /** Makes the framer as it was created: the next input begins between two messages. */
    void reset();

private:
    /** The part of a message that the next byte belongs to. */
    enum class State : std::uint8_t {
        Between,   ///< Line ends before a message.
        Line,      ///< The start line or a header line.
        LineStart, ///< The beginning of a line that may be the empty line.
        Body
    };
    /** Where the framer is in the stream. */
    struct Progress {
        State state = State::Between;
        std::uint8_t matched = 0;  ///< Number of bytes of a double CRLF that were read last.
        bool expectsPong = false;  ///< A ping was sent, and not answered.
        std::size_t length = 0;    ///< Of the message, in State::Body.
        Error error = Error::None; ///< The error after which the stream can't be read.
    };

    Frame nextOfStream(std::string_view input);
    Frame nextMessage(std::string_view input);
    Kind readLineEnd(char c);
    std::size_t readHeaderSection(std::string_view text);
    std::string_view joined(std::string_view more);
    Frame returned(Kind kind, Error error, std::string_view bytes, std::size_t consumed);
    void release();

    Limits m_limits;
    Mode m_mode;
    bool m_isReturned = false; ///< m_kept holds a frame that was returned, not the beginning of a message.
    Progress m_progress;
    std::string m_kept; ///< The message so far, if it began in an earlier input.
};
