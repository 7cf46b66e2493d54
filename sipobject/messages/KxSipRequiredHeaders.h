#pragma once

#include "util/KxString.h"

#include <string>

class KxSipHeaderSlots;

/** The headers that every message must have. [RFC 3261 8.1.1, 20] */
class KxSipRequiredHeaders {
public:
    /** Returns the text of the first failure of KxSipMessage::checkValidity; empty if there is none. `method` is the
        method that CSeq must name, or null. */
    static std::string sFault(const KxSipHeaderSlots& headers, const KxString* method);
};
