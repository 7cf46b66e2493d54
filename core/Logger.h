#pragma once

#include "core/CoreApi.h"
#include "core/LogLevel.h"

#include <log4cplus/logger.h>

#include <string>
#include <string_view>

namespace Oskan {

/** A named logger over log4cplus, configured there. Copies are the same logger. Usable from any thread. */
class KX_CORE_API Logger {
public:
    /** The logger of that name, made if there is none. A dot in the name parts a child from its parent. */
    explicit Logger(const std::string& name);

    /** The level in effect: the logger's own, else the nearest ancestor's. */
    LogLevel getLogLevel() const;
    bool isEnabledFor(LogLevel level) const;
    const std::string& getName() const;

    /** Logs the text as it stands, if the level is enabled. A record that no appender would get is dropped in silence,
        so that a host without logging is not bothered.
        @param source what log4cplus gets as the file; nil for none. */
    void log(LogLevel level, std::string_view text, const char* source = nullptr, int line = -1) const;

    /** The logger named as this one, a dot and the suffix. */
    Logger getChild(std::string_view suffix) const;

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
