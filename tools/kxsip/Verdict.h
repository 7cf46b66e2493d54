#pragma once

#include "tools/kxsip/ReadMessage.h"

#include <array>
#include <string>

/** Whether a message is of use, and why not. */
struct Verdict {
    enum Kind { Valid, Incomplete, Unusable, Refused };

    Kind kind = Valid;
    std::string why; ///< Without control characters; empty if the message is valid.

    const char* name() const { return sNames.at(kind); }
    /** Returns "incomplete: " and the reason; empty if the message is valid. */
    std::string text() const { return kind == Valid ? "" : name() + (": " + why); }

    static Verdict sOf(const ReadMessage& read);

    static constexpr std::array<const char*, 4> sNames = {"valid", "incomplete", "unusable", "refused"};
};
