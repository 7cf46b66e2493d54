#pragma once

#include "core/CoreApi.h"
#include "core/LogLevel.h"

#include <atomic>
#include <string>
#include <string_view>

namespace Oskan {

class Logger;

/** The logger of a class, in static storage and without cost at load:

        static constinit Oskan::AceCleanupLogger s_logger{"KxSipHeader"};

    The log4cplus logger "tandril.kx.KxSipHeader" is made on first use; a name with a dot suffix, such as
    "KxSipURL.UnknownTransportInContact", gives a child of the class's logger. Process exit releases it through
    ACE_Object_Manager; every use after that does nothing, so static destructors may still ask.

    The effective level is cached. A level changed through log4cplus (of this logger, an ancestor, the root, or the
    hierarchy's threshold) holds from the next top-level operation on, which is when an EntryTraceScope opens on a
    thread that has none open. While neither the logger nor an ancestor has an appender, every level counts as off,
    since nobody could read the record.

    Usable from any thread. Lives as long as the process. Never throws: a logging failure is no failure of the work
    that was logged. */
class KX_CORE_API AceCleanupLogger {
public:
    /** @param className a literal. */
    constexpr explicit AceCleanupLogger(const char* className) noexcept : m_className(className) {}
    AceCleanupLogger(const AceCleanupLogger&) = delete;
    AceCleanupLogger& operator=(const AceCleanupLogger&) = delete;

    bool isEnabled(LogLevel level) const noexcept {
        return static_cast<int>(level) >= m_level.load(std::memory_order_relaxed) && isEnabledSlow(level);
    }

    /** Logs the text unchanged, if the level is enabled.
        @param source what log4cplus gets as the file; nil for none. */
    void log(LogLevel level, std::string_view text, const char* source = nullptr, int line = -1) const noexcept;

    /** The logger itself, made if need be; one that logs nothing after process exit has released it. */
    Logger& getLogger() const;

    /** "tandril.kx." and the class name. */
    std::string getName() const;

private:
    friend class ClassLoggers;

    [[gnu::cold, gnu::noinline]] bool isEnabledSlow(LogLevel level) const noexcept;

    const char* m_className;
    mutable std::atomic<int> m_level{kNotMade}; ///< The lowest enabled level.
    mutable std::atomic<Logger*> m_logger{nullptr};
    mutable const AceCleanupLogger* m_nextOwner{nullptr}; ///< Of the same log4cplus logger.

    static constexpr int kNotMade = -2147483647 - 1;
};

/** Brings the cached levels of all AceCleanupLoggers up to date with log4cplus. EntryTraceScope calls it. */
KX_CORE_API void refreshLogLevels() noexcept;

} // namespace Oskan
