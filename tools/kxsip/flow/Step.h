#pragma once

#include "tools/kxsip/MessageFacts.h"

#include <cstddef>
#include <optional>
#include <string>

/** A message of a ladder. */
struct Step {
    MessageFacts facts;
    Origin origin;
    std::size_t index = 0; ///< Number of the message among all that were read.
    std::string text;      ///< Its bytes.
    std::string error;     ///< Why the library refused it; empty if it did not.
    std::size_t from = 0;  ///< Index of the column.
    std::size_t to = 0;
    std::optional<std::size_t> repeats; ///< Index of the first message with the same bytes, source and destination.

    /** Returns remarks for the label: "to PRACK", "SDP", "repeats 3", "refused". */
    std::string remark() const;
};
