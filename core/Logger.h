#pragma once

#include "core/CoreApi.h"
#include "core/LogLevel.h"

#include <log4cplus/logger.h>

#include <string>
#include <string_view>

namespace Oskan {

/** A named logger of log4cplus, configured through log4cplus. A copy is the same logger. Usable from any thread. */
class KX_CORE_API Logger {
public:
    /** The logger of that name, created if there is none. A dot in the name separates a parent from its child. */
    explicit Logger(const std::string& name);

    /** The level in effect: the logger's own, otherwise that of the nearest ancestor that has one. */
    LogLevel getLogLevel() const;
    bool isEnabledFor(LogLevel level) const;
    const std::string& getName() const;

    /** Logs the text unchanged, if the level is enabled. A record that no appender would receive is dropped silently,
        so that a host without logging is not disturbed; and so is what an appender throws.
        @param source passed to log4cplus as the file; nil for none. */
    void log(LogLevel level, std::string_view text, const char* source = nullptr, int line = -1) const;

private:
    friend class ClassLoggers;

    /** A logger that logs nothing. */
    Logger() = default;
    explicit Logger(const log4cplus::Logger& logger) : m_logger(logger), m_made(true) {}

    /** Whether an appender gets what is logged here: log4cplus complains on stderr about a record that none gets. */
    bool isRead() const;

    log4cplus::Logger m_logger;
    bool m_made = false;
};

} // namespace Oskan
