#pragma once

#include "core/AceCleanupLogger.h"
#include "core/Logger.h"

#include <atomic>
#include <string>

namespace Oskan {

/** The log4cplus loggers behind all AceCleanupLoggers, and the watch over their levels. Of this folder only. */
class ClassLoggers {
public:
    /** Makes the logger of a class unless it is made. Without effect when it cannot be made, or no more. */
    static void sMake(const AceCleanupLogger& logger) noexcept;
    /** The logger of a class; one that logs nothing once process exit has released it. */
    static Logger& sGet(const AceCleanupLogger& logger);
    /** As sGet, but a copy, usable while another thread exits the process. */
    static Logger sCopy(const AceCleanupLogger& logger);

    /** Whether a level, a threshold or an appender differs from what the cached levels were computed from. */
    static bool sChanged() noexcept;
    /** Computes the cached levels anew. */
    static void sUpdate() noexcept;

    /** Drops all loggers for good. False when that is done already or there never were any. */
    static bool sRelease() noexcept;

private:
    struct Node;
    struct ClassLogger;
    struct State;

    static State& sState();
    static Node* sNodeNamed(State& state, const std::string& name);
    static Node* sAddNode(State& state, const log4cplus::Logger& logger, Node* parent);
    static void sMakeLocked(const AceCleanupLogger& logger);
    static void sUpdateLocked(State& state);

    static State* s_state;
    static std::atomic<Node*> s_polled;
    static Logger& sNone();
};

} // namespace Oskan
