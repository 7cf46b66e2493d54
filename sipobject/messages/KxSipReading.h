#pragma once

#include "sipobject/KxSipFault.h"
#include "sipobject/KxSipText.h"
#include "sipobject/messages/KxSipResponse.h"
#include "sipobject/messages/KxSipStartLine.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class KxSipReportedBytes;

/** The result of reading bytes that came from the network: a message, or what is known about bytes that are none.

        const KxSipReading reading = KxSipReading::sRead(datagram);
        if (reading.isUsable()) {
            process(reading.message);
        } else if (const auto response = reading.response(); !response.isNil()) {
            send(response);
        }

    It accepts and refuses the same messages as KxSipMessage::sConstructFrom, and gives the same objects; in addition it
    recognises keep-alives, and skips line ends before a message. For an INVITE that takes 6 % more instructions. The
    views in it are parts of the bytes, which must outlive it. May be copied; the copies share the objects. */
struct KX_SIP_API KxSipReading {
    enum class Kind {
        Message,    ///< There is a message; its status may be 1 or 2.
        Ping,       ///< The bytes are CR LF CR LF: over a stream, a CR LF answers it. [RFC 5626 4.4.1]
        Pong,       ///< The bytes are CR LF. [RFC 5626 4.4.1]
        Refused,    ///< No message. With Error::KeepAlive, a keep-alive of another form.
        Incomplete, ///< Refused, and the bytes end within the start line, the header section or the body.
    };
    /** Why there is no message, by the class that KxSipMessage::sConstructFrom throws. */
    enum class Error {
        None,
        Parse,       ///< KxSipParseError.
        EmptyHeader, ///< KxSipParseErrorEmptyHeader: of a header in the Request-URI.
        KeepAlive,   ///< KxSipParseKeepAliveException: there are only line ends, or a blank, "/" or NUL comes first.
        Other        ///< KxException, mostly of KxSipMessage::checkValidity; or a class of the host.
    };
    /** A header line that can't be read and so is missing in the message. In the RFC grammar, a line of which at least
        one value can't be read; unless the message is refused for it, the value is kept in the message as text. */
    class DroppedLine {
    public:
        /** For the reader. The text reaches from the first byte of the line to the first byte after it. */
        DroppedLine(std::string_view bytes, const KxSipFault& fault);
        DroppedLine(std::string_view bytes, const KxHandle<KxException>& failure);

        std::size_t line = 0;  ///< Its number, 1 for the start line. A continued line has the number of its first line.
        std::string_view text; ///< The line with its continuations, without the line end.
        /** The reason: the text of the error. Made by each call, so that a message of bad lines needs little memory. */
        [[nodiscard]] KX_SIP_API std::string why() const;

    private:
        KxSipFault m_fault;
        KxHandle<KxException> m_failure; ///< Thrown by a header class of the host; else nil.
    };

    /** Reads the message at the beginning of the bytes, or a keep-alive, which must be all of the bytes. Line ends
        before a message are skipped. [RFC 3261 7.5] Bytes after the body are not read; without a Content-Length, the
        rest is the body. The bytes need not end with the header section's empty line: if they end before it, and
        nothing that is required is missing, they are a message, as for KxSipMessage::sConstructFrom. (A host that wants
        to refuse such a datagram uses a KxSipFramer.)
        Whatever the bytes are, this does not throw; std::bad_alloc and what a host's own classes throw that is no
        KxException may pass. The time is proportional to the number of bytes. */
    [[nodiscard]] static KxSipReading sRead(std::string_view bytes);

    Kind kind = Kind::Refused;
    KxHandle<KxSipMessage> message; ///< Nil unless the kind is Message.
    /** Nil if the kind is Message. Else what could be read of a message, for logs and answers: an object of the class
        that belongs to its first token, with its method, and with all headers that can be read, but mostly without a
        Request-URI or status code. Its status is not 0. Nil if there is not even a first token. */
    KxHandle<KxSipMessage> salvaged;

    Error error = Error::None;
    KxString errorText;            ///< The text of the error; nil if there is none.
    KxHandle<KxException> failure; ///< The error as an object; nil if there is none.
    std::size_t errorLine = 0;   ///< 1 for an error of the start line; of an incomplete message its last line; else 0.
    std::size_t errorOffset = 0; ///< Where that line begins in the bytes; of an incomplete message, where it ends.

    std::vector<DroppedLine> dropped; ///< The header lines that can't be read, of a refused message too, in order.
    std::size_t consumed = 0;         ///< How many bytes were read: up to the end of the message, or to the error.

    /** The status code to answer with; 0 for a message that can be processed, and for all that must not be answered
        (responses, ACK, keep-alives).
        For a request that is a message: 400 for status 2, if a header that a response needs is missing or repeated
        (Via, From, To, Call-ID, CSeq; there may be several Via), and if CSeq does not name the method. So a dropped
        line does not matter unless it was one of these. Else 483 and 414 as KxSipRequest::rejectedByStack. If there is
        no message: 416 for "Unsupported Uri Scheme", 505 for "Invalid SIP Version", else 400. [RFC 3261 8.1.1, 8.2,
        16.3] */
    unsigned statusCode = 0;

    /** Whether there is a message that can be processed: statusCode is 0, and would be if a response or an ACK were
        answered. The hops and the Request-URI of an ACK do not count. */
    [[nodiscard]] bool isUsable() const { return m_isUsable; }

    /** What can be read of the start line. */
    KxSipStartLine startLine() const { return KxSipStartLine::sRead(m_text); }

    /** Returns a response without a body to the request, whether it was refused or not: all its Via headers, From, To,
        Call-ID and CSeq as far as they can be read, and Content-Length 0. It uses the connection of `message` (or
        `salvaged`) as the constructor of KxSipResponse does. Its status is 1 if one of these headers is missing, else
        0. Nil if there is nothing to answer: no status code, no request, an ACK, or the first Via can't be read.

        What a stranger wrote is not echoed blindly: a header with a control character counts as one that can't be read,
        and no response is more than 512 bytes longer than the request (else nil). The host decides where the response
        goes, and should send it only to the address from which the request came. [RFC 3261 8.2.6, 18.2.2]
        @param code 100 to 699; 0 for statusCode. Throws KxSipParseError "Invalid Response code".
        @param toTag the tag if To has none; without it a new one is made. A server without transactions must give the
        same tag to a request that comes again. [RFC 3261 8.2.7] */
    [[nodiscard]] KxHandle<KxSipResponse> response(int code = 0, KxSipText toTag = {}) const;

private:
    void readMessage();
    void classify(KxSipReportedBytes& in);
    void setError(const KxHandle<KxException>& why);
    void setIncomplete();
    void numberDropped();
    unsigned faultCode(const KxSipRequest* read) const;
    bool losesTopVia() const;
    const KxSipRequest* request() const;

    std::string_view m_text; ///< The bytes after the line ends before the message.
    std::size_t m_begin = 0; ///< Where it begins in the bytes.
    bool m_isUsable = false;
};
