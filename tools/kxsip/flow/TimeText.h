#pragma once

#include "tools/kxsip/flow/Call.h"

#include <chrono>
#include <string>

/** The time that a ladder shows for each message. */
enum class TimeMode {
    Elapsed, ///< Since the call began.
    Utc,
    Local, ///< In the time zone of the user.
};

/** Writes the times of a ladder. */
class TimeText {
public:
    explicit TimeText(TimeMode mode) : m_mode(mode) {}

    /** Returns the time of a message, "0.503" or "13:22:25.307"; on a later day than that on which the call began
        "+1d 00:10:00.120". */
    std::string of(const Step& step, const Call& call) const;
    /** Returns "2026-11-21 13:22:21.935 UTC", or "2026-11-21 14:22:21.935 +0100" if local times are wanted. */
    std::string date(std::chrono::microseconds time) const;
    bool isElapsed() const { return m_mode == TimeMode::Elapsed; }

private:
    class Parts;

    TimeMode m_mode;
};
