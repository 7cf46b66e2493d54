#pragma once

#include <chrono>
#include <optional>
#include <string>

/** A time that a user wrote: "2026-11-21", "2026-11-21T13:22:21.5+01:00", or a time of any day, "13:22:21". Without a zone
    it is in UTC. */
struct TimeBound {
    using Time = std::chrono::microseconds;

    Time first{}; ///< The first and the last moment that the text means: of a day, or of a second.
    Time last{};  ///< Since 1970, or since midnight.
    bool isTimeOfDay = false;

    /** Returns nothing for any other text. */
    static std::optional<TimeBound> sRead(const std::string& text);
    /** Returns the error for such a text, else an empty one. */
    static std::string sFault(const std::string& text);
    /** Whether the time, since 1970, is between both, if they are there. If both are times of day and the first is the
        later one, what is between them goes over midnight. */
    static bool sIsBetween(Time time, const std::optional<TimeBound>& since, const std::optional<TimeBound>& until);
};
