#pragma once

#include "sipobject/messages/KxSipMessage.h"
#include "tools/kxsip/Origin.h"
#include "tools/kxsip/Outcome.h"
#include "util/KxException.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** One message of a file, or the text that was refused. */
struct ReadMessage {
    std::string file;
    std::size_t index = 0;          ///< 0 for the first message of the file.
    KxHandle<KxSipMessage> message; ///< Nil if the message was refused.
    KxHandle<KxException> error;    ///< Why the message was refused; else nil.
    std::size_t line = 0;           ///< Line of the file where it begins, 1 for the first; 0 in a capture.
    std::string text;               ///< Its bytes; those of a refused message reach to the next message.
    std::optional<Origin> origin;   ///< Only for a message from a capture.
    std::size_t unread = 0;         ///< Bytes of the file after this message; in a capture, of the datagram.

    /** Parses a message at the beginning of the bytes. Returns the number of bytes that were read; if the message is
        refused, these are the bytes before the position where parsing stopped. */
    std::size_t parse(std::string_view bytes);

    bool isRefused() const { return message.isNil(); }
    Outcome outcome() const;
    /** Returns "FILE, message 2, line 40"; without the line if it is 0 or 1. */
    std::string place() const;
    /** Reports an error with this message on standard error. */
    void complain(const KxException& why) const;
};
