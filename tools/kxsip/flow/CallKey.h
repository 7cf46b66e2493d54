#pragma once

#include "tools/kxsip/MessageFacts.h"

#include <algorithm>
#include <string>

/** Returns what the messages of a call have in common: the Call-ID; without one, the two addresses. The message must come
    from a capture. */
inline std::string callKeyOf(const ReadMessage& read, const MessageFacts& facts) {
    if (!facts.callId.empty()) {
        return facts.callId;
    }
    const auto [first, second] = std::minmax(read.origin->source.address, read.origin->destination.address);
    return ' ' + first + ' ' + second; // no Call-ID begins with a blank
}
