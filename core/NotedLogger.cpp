#include "core/NotedLogger.h"

#include <log4cplus/appender.h>
#include <log4cplus/hierarchy.h>
#include <log4cplus/tstring.h>

#include <typeinfo>

namespace Oskan {

namespace {

struct Factory : log4cplus::DefaultLoggerFactory {
    log4cplus::spi::LoggerImpl* makeNewLoggerImplInstance(const log4cplus::tstring& name,
                                                          log4cplus::Hierarchy& hierarchy) override {
        return new NotedLogger(name, hierarchy);
    }
};

} // namespace

constinit std::atomic<unsigned> NotedLogger::s_added{0};

log4cplus::Logger NotedLogger::sGet(const std::string& name) {
    const log4cplus::spi::LoggerFactory& chosen = *log4cplus::Logger::getDefaultHierarchy().getLoggerFactory();
    if (typeid(chosen) != typeid(log4cplus::DefaultLoggerFactory)) {
        return log4cplus::Logger::getInstance(LOG4CPLUS_STRING_TO_TSTRING(name));
    }
    Factory factory;
    return log4cplus::Logger::getInstance(LOG4CPLUS_STRING_TO_TSTRING(name), factory);
}

void NotedLogger::addAppender(log4cplus::SharedAppenderPtr added) {
    LoggerImpl::addAppender(added);
    s_added.fetch_add(1, std::memory_order_release);
}

} // namespace Oskan
