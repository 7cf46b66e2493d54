#pragma once

#include "core/AceCleanupLogger.h"
#include "core/Logger.h"

#include <atomic>
#include <string>

namespace Oskan {

/** The log4cplus loggers of all AceCleanupLoggers, and the levels cached from them. Used within this folder only. */
class ClassLoggers {
public:
    /** Makes the logger of a class unless it is made. Without effect when it cannot be made. */
    static void sMake(const AceCleanupLogger& owner) noexcept;
    /** The logger of a class; one that logs nothing once process exit has released it. */
    static Logger& sGet(const AceCleanupLogger& owner);
    /** As sGet, but a copy, usable while another thread exits the process. */
    static Logger sCopy(const AceCleanupLogger& owner);

    /** Computes all cached levels. */
    static void sUpdate() noexcept;

    /** Ends logging for good, since log4cplus is about to be torn down. Waits up to a second for the records that other
        threads are writing. False when that is done already or there never were any loggers. */
    static bool sRelease() noexcept;

    /** While such an object exists, a record may be written: sRelease waits for it, unless this thread calls it. */
    class Writing {
    public:
        Writing() noexcept;
        ~Writing();
        Writing(const Writing&) = delete;
        Writing& operator=(const Writing&) = delete;

        /** False after sRelease: then log4cplus must not be called. */
        bool isAllowed() const noexcept { return m_isAllowed; }

    private:
        bool m_isAllowed;
    };

private:
    friend void refreshLogLevels() noexcept;

    struct Node;
    struct Group;
    struct State;

    static State& sState();
    static Node& sNodeNamed(State& state, const std::string& name);
    static void sUpdateLocked(State& state);
    static Logger& sNone();

    static State* s_state;
    static std::atomic<State*> s_watched; ///< Nil before the first logger is made and after the release.
};

} // namespace Oskan
