#pragma once

#include "sipobject/messages/KxSipMessage.h"

#include <string>
#include <vector>

/** One value of a header, which serialize writes as one line. */
struct HeaderValue {
    HeaderID id = 0;
    std::string name;      ///< The name as it is written.
    std::string className; ///< The class of the header object.
    std::string value;     ///< The text that is written after ": ".

    /** Returns all values of the message in the order in which they are written. */
    static std::vector<HeaderValue> sAllOf(const KxSipMessage& message);
};
