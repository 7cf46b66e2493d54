#include "core/Logger.h"

#include "core/ClassLoggers.h"

#include <log4cplus/appender.h>
#include <log4cplus/tstring.h>

namespace Oskan {

Logger::Logger(const std::string& name) : Logger(log4cplus::Logger::getInstance(LOG4CPLUS_STRING_TO_TSTRING(name))) {}

LogLevel Logger::getLogLevel() const {
    return m_made ? static_cast<LogLevel>(m_logger.getChainedLogLevel()) : LogLevel::Off;
}

bool Logger::isEnabledFor(LogLevel level) const {
    return m_made && m_logger.isEnabledFor(static_cast<int>(level));
}

const std::string& Logger::getName() const {
    static const std::string none;
    return m_made ? m_logger.getName() : none;
}

void Logger::log(LogLevel level, std::string_view text, const char* source, int line) const {
    const ClassLoggers::Writing writing;
    if (!writing.isAllowed() || !isEnabledFor(level) || !isRead()) {
        return;
    }
    try {
        m_logger.forcedLog(static_cast<int>(level), log4cplus::tstring(text), source, line, "");
    } catch (...) {
        // The work that was to be logged goes on.
    }
}

bool Logger::isRead() const {
    for (log4cplus::Logger logger = m_logger; logger.getAllAppenders().empty(); logger = logger.getParent()) {
        if (!logger.getAdditivity()) {
            return false;
        }
        if (logger.getName() == "root") { // The root, or a child of it of that name; only the former has no parent.
            return !log4cplus::Logger::getRoot().getAllAppenders().empty();
        }
    }
    return true;
}

} // namespace Oskan
