#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>
#include <log4cplus/nullappender.h>

/** While it is in scope, the library logs everything it can, to an appender that drops it. */
class Traced {
public:
    Traced() {
        static const log4cplus::SharedAppenderPtr nobody(new log4cplus::NullAppender());
        m_root.addAppender(nobody);
        m_root.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    }
    ~Traced() { m_root.removeAllAppenders(); }
    Traced(const Traced&) = delete;
    Traced& operator=(const Traced&) = delete;

private:
    log4cplus::Logger m_root = log4cplus::Logger::getRoot();
};
