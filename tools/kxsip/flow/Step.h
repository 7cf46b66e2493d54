#pragma once

#include "tools/kxsip/MessageFacts.h"
#include "tools/kxsip/Verdict.h"

#include <cstddef>
#include <optional>
#include <string>

/** A message of a ladder. */
struct Step {
    MessageFacts facts;
    Origin origin;
    std::size_t index = 0; ///< Number of the message among all that were read.
    std::string text;      ///< Its bytes.
    Verdict verdict;
    Packets packets;      ///< That carried the message; only if Reading::keepsPackets.
    std::size_t from = 0; ///< Index of the column.
    std::size_t to = 0;
    std::optional<std::size_t> repeats; ///< Index of the first message with the same bytes, source and destination.

    /** Returns remarks for the label: "to PRACK", "refused", "SDP", "repeats 3". */
    std::string remark() const;
    bool isFlawed() const { return verdict.kind != Verdict::Valid; }
    /** Whether the library can't use the message. */
    bool isUseless() const { return verdict.kind == Verdict::Refused || verdict.kind == Verdict::Unusable; }
};
