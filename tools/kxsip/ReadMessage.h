#pragma once

#include "sipobject/messages/KxSipMessage.h"
#include "tools/kxsip/Outcome.h"
#include "util/KxException.h"

#include <cstddef>
#include <string>

/** One message of a file, or what stood in its place. */
struct ReadMessage {
    std::string file;
    std::size_t index = 0;          ///< 0 for the first message of the file.
    KxHandle<KxSipMessage> message; ///< Nil when it was refused.
    KxHandle<KxException> error;    ///< Why it was refused; else nil.
    std::size_t unread = 0;         ///< Bytes of the file behind this message.

    bool isRefused() const { return message.isNil(); }
    Outcome outcome() const;
    /** Tells on standard error what could not be done with the message. */
    void complain(const KxException& why) const;
};
