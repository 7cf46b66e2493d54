#include "core/TraceScope.h"

#include "LogCapture.h"

#include <gmock/gmock.h>

#include <stdexcept>

using Oskan::AceCleanupLogger;
using Oskan::EntryTraceScope;
using Oskan::TraceScope;
using testing::ElementsAre;

static constinit AceCleanupLogger s_logger{"KxTraced"};

static void setLevel(int level) {
    log4cplus::Logger::getInstance("tandril.kx.KxTraced").setLogLevel(level);
    EntryTraceScope entry(s_logger, "setLevel");
}

TEST(TraceScopeTest, LogsEntryAndExitInPairs) {
    LogCapture capture;
    setLevel(log4cplus::TRACE_LOG_LEVEL);
    capture.records.clear();
    {
        EntryTraceScope outer(s_logger, "KxTraced::parse");
        TraceScope inner(s_logger, "KxTraced::doParse");
    }
    try {
        TraceScope scope(s_logger, "KxTraced::throws");
        throw std::runtime_error("x");
    } catch (const std::runtime_error&) {
    }
    for (const LogRecord& record : capture.records) {
        EXPECT_EQ(record.level, 0);
    }
    EXPECT_THAT(capture.texts(),
                ElementsAre("ENTER : KxTraced::parse", "ENTER : KxTraced::doParse", "EXIT : KxTraced::doParse",
                            "EXIT : KxTraced::parse", "ENTER : KxTraced::throws", "EXIT : KxTraced::throws"));
}

TEST(TraceScopeTest, OnlyAnEntryThatWasLoggedHasAnExit) {
    LogCapture capture;
    setLevel(log4cplus::DEBUG_LOG_LEVEL);
    {
        TraceScope scope(s_logger, "begun while off");
        setLevel(log4cplus::TRACE_LOG_LEVEL);
        capture.texts();
    }
    EXPECT_THAT(capture.texts(), ElementsAre());
}

TEST(TraceScopeTest, AnAppenderThatThrowsDisturbsNothing) {
    LogCapture capture(log4cplus::Logger::getRoot(), [](const LogRecord&) { throw std::runtime_error("disk full"); });
    setLevel(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_NO_THROW(TraceScope scope(s_logger, "KxTraced::parse"));
    EXPECT_NO_THROW(s_logger.log(Oskan::LogLevel::Error, "text"));
}
