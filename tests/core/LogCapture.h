#pragma once

#include <gtest/gtest.h>
#include <log4cplus/appender.h>
#include <log4cplus/hierarchy.h>
#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>
#include <log4cplus/spi/loggingevent.h>

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/** For death tests: a forked child has no log4cplus threads, but waits for them at its exit. */
class DeathTest : public testing::Test {
protected:
    DeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

/** What an appender saw of one record. */
struct LogRecord {
    std::string logger;
    int level;
    std::string text;
    std::string file;
    int line;

    bool operator==(const LogRecord&) const = default;
};

/** Passes every record to a function. */
class FunctionAppender : public log4cplus::Appender {
public:
    explicit FunctionAppender(std::function<void(const LogRecord&)> function) : m_function(std::move(function)) {}
    ~FunctionAppender() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        m_function({event.getLoggerName(), event.getLogLevel(), event.getMessage(), event.getFile(), event.getLine()});
    }

private:
    std::function<void(const LogRecord&)> m_function;
};

/** Attaches an appender to a logger while in scope; the destructor resets all of log4cplus. */
class LogCapture {
public:
    explicit LogCapture(log4cplus::Logger logger, std::function<void(const LogRecord&)> function) {
        logger.addAppender(log4cplus::SharedAppenderPtr(new FunctionAppender(std::move(function))));
    }
    /** Keeps the records. */
    explicit LogCapture(log4cplus::Logger logger = log4cplus::Logger::getRoot())
        : LogCapture(logger, [this](const LogRecord& record) {
              const std::lock_guard lock(m_mutex);
              records.push_back(record);
          }) {}
    ~LogCapture() { log4cplus::Logger::getDefaultHierarchy().resetConfiguration(); }

    /** The texts seen since the last call. */
    std::vector<std::string> texts() {
        std::vector<std::string> all;
        for (LogRecord& record : records) {
            all.push_back(std::move(record.text));
        }
        records.clear();
        return all;
    }

    std::vector<LogRecord> records;

private:
    std::mutex m_mutex; // the thread sanitizer does not see that of log4cplus
};
