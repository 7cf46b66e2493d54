#pragma once

#include "sipobject/messages/KxSipMessage.h"

#include <string>
#include <vector>

/** One value of a header, a line of what serialize writes. */
struct HeaderValue {
    HeaderID id = 0;
    std::string name;      ///< As it is written.
    std::string className; ///< Of the object that holds it.
    std::string value;     ///< What is written behind ": ".

    /** All values of the message in the order in which they are written. */
    static std::vector<HeaderValue> sAllOf(const KxSipMessage& message);
};
