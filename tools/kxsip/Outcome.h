#pragma once

#include <algorithm>

/** The exit code of the tool. */
enum class Outcome {
    Valid = 0,
    No = 1,            ///< The answer to a question with yes or no.
    HeaderDropped = 1, ///< A message was kept without a header line that could not be read.
    Refused = 2,       ///< A message was refused, or was kept but can't be used.
    Failed = 3,        ///< The tool could not do its work; for example, a file can't be read.
    NoMatch = 4,       ///< No message matches the filters.
};

/** Returns the worse one; Failed is the worst of all. */
inline Outcome worse(Outcome a, Outcome b) {
    return a == Outcome::Failed ? a : b == Outcome::Failed ? b : std::max(a, b);
}
