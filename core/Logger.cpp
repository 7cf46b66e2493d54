#include "core/Logger.h"

#include "core/Log4cplusAccess.h"

#include <log4cplus/tstring.h>

namespace Oskan {

namespace {

bool someoneReads(const log4cplus::Logger& logger) {
    for (const Log4cplusAccess::Impl* impl = Log4cplusAccess::sImpl(logger); impl;
         impl = impl->getAdditivity() ? Log4cplusAccess::sParent(*impl) : nullptr) {
        if (Log4cplusAccess::sHasAppender(*impl))
            return true;
    }
    return false;
}

} // namespace

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
    if (isEnabledFor(level) && someoneReads(m_logger))
        m_logger.forcedLog(static_cast<int>(level), log4cplus::tstring(text), source, line, "");
}

Logger Logger::getChild(std::string_view suffix) const {
    if (!m_made)
        return *this;
    std::string name = getName();
    name += '.';
    name += suffix;
    return Logger(name);
}

} // namespace Oskan
