#pragma once

#include "sipobject/messages/KxSipMessage.h"
#include "tools/kxsip/Origin.h"
#include "tools/kxsip/Outcome.h"
#include "util/KxException.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** One message of a file, or what stood in its place. */
struct ReadMessage {
    std::string file;
    std::size_t index = 0;          ///< 0 for the first message of the file.
    KxHandle<KxSipMessage> message; ///< Nil when it was refused.
    KxHandle<KxException> error;    ///< Why it was refused; else nil.
    std::size_t line = 0;           ///< Of the file, where it begins, 1 for the first; 0 in a capture.
    std::string text;               ///< Its bytes; of one that was refused those up to the next.
    std::optional<Origin> origin;   ///< Only of a message from a capture.
    std::size_t unread = 0;         ///< Bytes of the file behind this message; in a capture, of the datagram.

    /** Reads a message from the beginning of the bytes; returns how many were taken. Where it is refused, these are the
        bytes in front of the place where reading stopped. */
    std::size_t parse(std::string_view bytes);

    bool isRefused() const { return message.isNil(); }
    Outcome outcome() const;
    /** "FILE, message 2, line 40"; the line stands only where it tells something. */
    std::string place() const;
    /** Tells on standard error what could not be done with the message. */
    void complain(const KxException& why) const;
};
