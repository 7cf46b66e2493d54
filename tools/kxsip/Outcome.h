#pragma once

#include <algorithm>

/** What the tool's exit code says; the greater, the worse. */
enum class Outcome {
    Valid = 0,
    No = 1,            ///< To what is asked with yes or no.
    HeaderDropped = 1, ///< A message was kept without a header line that could not be read.
    Refused = 2,       ///< A message was not read at all, or what was read is not usable.
    Failed = 3,        ///< The tool could not do its work, a file can't be read for one.
};

inline Outcome worse(Outcome a, Outcome b) {
    return std::max(a, b);
}
