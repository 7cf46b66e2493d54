#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggerimpl.h>

#include <atomic>
#include <string>

namespace Oskan {

/** A logger of log4cplus that notes when an appender is added to it, so that nobody has to look. Used within this
    folder only. */
class NotedLogger final : public log4cplus::spi::LoggerImpl {
public:
    NotedLogger(const log4cplus::tstring& loggerName, log4cplus::Hierarchy& owner) : LoggerImpl(loggerName, owner) {}

    /** The logger of that name. If there is none, one of this class is made, unless the host has chosen another. */
    static log4cplus::Logger sGet(const std::string& name);

    /** How many appenders were ever added to loggers of this class. */
    static unsigned sAdded() { return s_added.load(std::memory_order_acquire); }

    void addAppender(log4cplus::SharedAppenderPtr added) override;

private:
    static std::atomic<unsigned> s_added;
};

} // namespace Oskan
