#pragma once

#include "sipobject/messages/KxSipMessage.h"
#include "tools/kxsip/Origin.h"
#include "tools/kxsip/Outcome.h"
#include "tools/kxsip/capture/Packet.h"
#include "util/KxException.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** A header line that the library dropped from a message. */
struct DroppedLine {
    std::size_t line = 0; ///< Number of the line in the message, 1 for the start line.
    std::string text;     ///< The line without white space around it.
    std::string why;      ///< The library's error text.

    /** Returns the beginning of the text, with control characters as \xNN. */
    std::string shown() const;
};

/** One message of a file, or the text that was refused. */
struct ReadMessage {
    std::string file;
    std::size_t index = 0;            ///< 0 for the first message of the file.
    KxHandle<KxSipMessage> message;   ///< Nil if the message was refused.
    KxHandle<KxSipMessage> salvaged;  ///< If the message was refused, what could be read of it; may be nil.
    KxHandle<KxException> error;      ///< Why the message was refused; else nil.
    std::vector<DroppedLine> dropped; ///< The header lines that could not be read, of a refused message too.
    std::size_t line = 0;             ///< Line of the file where it begins, 1 for the first; 0 in a capture.
    std::string text;                 ///< Its bytes; those of a refused message as far as they were read.
    std::optional<Origin> origin;     ///< Only for a message from a capture.
    Packets packets;                  ///< That carried the message; only if Reading::keepsPackets.
    bool isLive = false;              ///< Whether it was read from a live input.
    bool isIncomplete = false;        ///< Whether the message was refused because its bytes end too early.
    /** Bytes of the file after this message; in a capture, of the datagram. Nothing for text from a live input or a
        packed file. */
    std::optional<std::size_t> unread;

    /** Parses a message at the beginning of the bytes. Returns the number of bytes that were read; if the message is
        refused, these are the bytes before the position where parsing stopped. */
    std::size_t parse(std::string_view bytes);

    bool isRefused() const { return message.isNil(); }
    /** Returns the message, or else what could be read of it; nil if that is nothing. */
    const KxHandle<KxSipMessage>& object() const { return isRefused() ? salvaged : message; }
    Outcome outcome() const;
    /** Returns "FILE, message 2, line 40"; without the line if it is 0 or 1. */
    std::string place() const;
    /** Reports an error with this message on standard error. */
    void complain(const KxException& why) const;
};
