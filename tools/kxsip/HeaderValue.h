#pragma once

#include "sipobject/messages/KxSipMessage.h"
#include "util/KxException.h"

#include <string>
#include <vector>

/** The text of a header value as it is written, or why it can't be. */
struct HeaderText {
    KxString text;               ///< What is written after ": ".
    KxHandle<KxException> error; ///< Nil if it can be written.

    static HeaderText sOf(const KxSipHeader& header);
};

/** One value of a header, which serialize writes as one line. */
struct HeaderValue {
    HeaderID id = 0;
    std::string name;      ///< The name as it is written.
    std::string className; ///< The class of the header object.
    HeaderText value;

    /** Returns all values of the message in the order in which they are written. */
    static std::vector<HeaderValue> sAllOf(const KxSipMessage& message);
};
