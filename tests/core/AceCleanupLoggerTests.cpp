#include "core/AceCleanupLogger.h"

#include "LogCapture.h"
#include "core/Logger.h"
#include "core/SipLoggers.h"
#include "core/TraceScope.h"

#include <ace/Object_Manager.h>
#include <gtest/gtest.h>
#include <log4cplus/configurator.h>

#include <cstdlib>
#include <functional>
#include <sstream>
#include <thread>
#include <utility>

using Oskan::AceCleanupLogger;
using Oskan::EntryTraceScope;
using Oskan::LogLevel;

namespace {

constinit AceCleanupLogger s_logger{"KxAlpha"};
constinit AceCleanupLogger s_childLogger{"KxAlpha.UnknownTransportInContact"};
constinit AceCleanupLogger s_quietLogger{"KxQuiet"};
constinit AceCleanupLogger s_hostMadeLogger{"KxHostMade"};

/** Loggers enough to fill several groups of the watch; as those of classes, they are never destroyed. */
const std::vector<AceCleanupLogger*>& hundredLoggers() {
    static std::vector<AceCleanupLogger*>& all = *new std::vector<AceCleanupLogger*>;
    while (all.size() < 100)
        all.push_back(new AceCleanupLogger((new std::string("KxNo" + std::to_string(all.size())))->c_str()));
    return all;
}

void openEntry() {
    EntryTraceScope scope(s_quietLogger, "entry");
}

log4cplus::Logger log4(const std::string& name) {
    return log4cplus::Logger::getInstance(name);
}

/** Uses its logger when the process has released it: the run fails if that crashes. */
struct LogsAtExit {
    ~LogsAtExit() {
        openEntry();
        s_logger.log(LogLevel::Fatal, "never seen");
        s_logger.getLogger().log(LogLevel::Fatal, "never seen");
        static constinit AceCleanupLogger s_lateLogger{"KxLate"};
        s_lateLogger.log(LogLevel::Fatal, "never seen");
    }
};
const LogsAtExit s_logsAtExit;

using AceCleanupLoggerDeathTest = DeathTest;

} // namespace

TEST(AceCleanupLoggerTest, RecordsCarryNameLevelSourceAndLine) {
    LogCapture capture;
    openEntry();
    s_logger.log(LogLevel::Warn, "100% as it stands", "KxAlpha", 33);
    s_childLogger.log(LogLevel::Error, "child");
    s_logger.getLogger().getChild("Other").log(LogLevel::Fatal, "other child");
    Oskan::Sip::getUAInteropLogger().log(LogLevel::Info, "interop");
    Oskan::Sip::getUAInteropMaxForwardsLogger().log(LogLevel::Info, "hops", "src", 1);
    const std::vector<LogRecord> expected{
        {"tandril.kx.KxAlpha", 30000, "100% as it stands", "KxAlpha", 33},
        {"tandril.kx.KxAlpha.UnknownTransportInContact", 40000, "child", "", -1},
        {"tandril.kx.KxAlpha.Other", 50000, "other child", "", -1},
        {"tandril.sip.UAInterop", 20000, "interop", "", -1},
        {"tandril.sip.UAInterop.MaxForwards", 20000, "hops", "src", 1},
    };
    EXPECT_EQ(capture.records, expected);
}

TEST(AceCleanupLoggerTest, LevelChangedThroughLog4cplusHoldsFromTheNextEntry) {
    LogCapture capture;
    auto& hierarchy = log4cplus::Logger::getDefaultHierarchy();
    struct Row {
        const char* name;
        std::function<void()> change;
        LogLevel lowestOfLogger;
        LogLevel lowestOfChild;
    };
    const std::vector<Row> rows{
        {"root", [] { log4cplus::Logger::getRoot().setLogLevel(30000); }, LogLevel::Warn, LogLevel::Warn},
        {"near ancestor", [] { log4("tandril.kx").setLogLevel(20000); }, LogLevel::Info, LogLevel::Info},
        {"far ancestor is hidden", [] { log4("tandril").setLogLevel(50000); }, LogLevel::Info, LogLevel::Info},
        {"near ancestor inherits", [] { log4("tandril.kx").setLogLevel(-1); }, LogLevel::Fatal, LogLevel::Fatal},
        {"own", [] { log4("tandril.kx.KxAlpha").setLogLevel(0); }, LogLevel::Trace, LogLevel::Trace},
        {"child", [] { log4("tandril.kx.KxAlpha.UnknownTransportInContact").setLogLevel(40000); }, LogLevel::Trace,
         LogLevel::Error},
        {"disable", [&] { hierarchy.disable(log4cplus::INFO_LOG_LEVEL); }, LogLevel::Warn, LogLevel::Error},
        {"enable all", [&] { hierarchy.enableAll(); }, LogLevel::Trace, LogLevel::Error},
        {"properties",
         [&] {
             std::istringstream properties("log4cplus.logger.tandril.kx.KxAlpha=WARN\n"
                                           "log4cplus.logger.tandril.kx.KxAlpha.UnknownTransportInContact=TRACE\n");
             log4cplus::PropertyConfigurator(properties).configure();
         },
         LogLevel::Warn, LogLevel::Trace},
        {"off", [] { log4("tandril.kx.KxAlpha").setLogLevel(log4cplus::OFF_LOG_LEVEL); }, LogLevel::Off,
         LogLevel::Trace},
    };
    const auto expectLowest = [](const AceCleanupLogger& logger, LogLevel lowest) {
        for (const LogLevel level :
             {LogLevel::Trace, LogLevel::Debug, LogLevel::Info, LogLevel::Warn, LogLevel::Error, LogLevel::Fatal})
            EXPECT_EQ(logger.isEnabled(level), level >= lowest) << static_cast<int>(level);
    };
    openEntry();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const bool before = s_logger.isEnabled(LogLevel::Info);
        {
            EntryTraceScope outer(s_quietLogger, "outer");
            row.change();
            openEntry(); // Not the outermost: the operation goes on as it began.
            EXPECT_EQ(s_logger.isEnabled(LogLevel::Info), before);
        }
        openEntry();
        expectLowest(s_logger, row.lowestOfLogger);
        expectLowest(s_childLogger, row.lowestOfChild);
    }
}

TEST(AceCleanupLoggerTest, EveryOfManyLoggersIsWatched) {
    LogCapture capture;
    log4("tandril.kx.KxHostMade").setLogLevel(40000); // Made by the host, before the class uses it.
    std::vector<AceCleanupLogger*> loggers(hundredLoggers().begin(), hundredLoggers().begin() + 70);
    loggers.push_back(&s_hostMadeLogger);
    openEntry();
    EXPECT_FALSE(s_hostMadeLogger.isEnabled(LogLevel::Warn));
    for (AceCleanupLogger* logger : loggers) // all are made before the first is changed
        EXPECT_TRUE(logger->isEnabled(LogLevel::Error));
    // Two passes: the second moves levels that are set already, and back to not set.
    for (const auto& [level, firstEnabled] : {std::pair{50000, LogLevel::Fatal}, std::pair{-1, LogLevel::Debug}}) {
        for (AceCleanupLogger* logger : loggers) {
            log4(logger->getName()).setLogLevel(30000);
            openEntry();
            ASSERT_FALSE(logger->isEnabled(LogLevel::Info)) << logger->getName();
            ASSERT_TRUE(logger->isEnabled(LogLevel::Warn)) << logger->getName();
            log4(logger->getName()).setLogLevel(level);
            openEntry();
            ASSERT_TRUE(logger->isEnabled(firstEnabled)) << logger->getName();
            ASSERT_EQ(logger->isEnabled(LogLevel::Error), firstEnabled <= LogLevel::Error) << logger->getName();
        }
    }
}

TEST(AceCleanupLoggerTest, WithoutAnAppenderAllIsOffAndNothingIsComplainedAbout) {
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
    testing::internal::CaptureStderr();
    openEntry();
    EXPECT_FALSE(s_logger.isEnabled(LogLevel::Fatal));
    s_logger.log(LogLevel::Fatal, "nobody reads this");
    s_logger.getLogger().log(LogLevel::Fatal, "nor this");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    for (const char* name : {"", "tandril", "tandril.kx.KxAlpha"}) {
        SCOPED_TRACE(name);
        {
            LogCapture capture(*name ? log4(name) : log4cplus::Logger::getRoot());
            openEntry();
            s_logger.log(LogLevel::Debug, "seen");
            EXPECT_EQ(capture.texts(), std::vector<std::string>{"seen"});
            log4("tandril.kx.KxAlpha").setAdditivity(false);
            s_logger.log(LogLevel::Debug, "own appenders only");
            EXPECT_EQ(capture.texts().size(), std::string(name) == "tandril.kx.KxAlpha" ? 1U : 0U);
        }
        openEntry();
        EXPECT_FALSE(s_logger.isEnabled(LogLevel::Fatal));
    }
}

TEST(AceCleanupLoggerTest, AnAppenderTakenAwayReadsNoMore) {
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
    openEntry();
    EXPECT_FALSE(s_logger.isEnabled(LogLevel::Fatal)); // makes the logger, ahead of log4cplus
    log4cplus::Logger logger = log4("tandril.kx.KxAlpha");
    log4cplus::SharedAppenderPtr reader(new FunctionAppender([](const LogRecord&) {}));
    reader->setName("reader");
    for (const std::function<void()>& takeAway : std::initializer_list<std::function<void()>>{
             [&] { logger.removeAppender(reader); }, [&] { logger.removeAppender("reader"); }}) {
        logger.addAppender(reader);
        openEntry();
        EXPECT_TRUE(s_logger.isEnabled(LogLevel::Fatal));
        takeAway();
        openEntry();
        EXPECT_FALSE(s_logger.isEnabled(LogLevel::Fatal));
    }
}

TEST_F(AceCleanupLoggerDeathTest, UseAfterReleaseDoesNothing) {
    const auto useAfter = [](const std::function<void()>& release) {
        LogCapture capture;
        openEntry();
        EntryTraceScope scope(s_logger, "open while released");
        if (!s_logger.isEnabled(LogLevel::Error))
            std::_Exit(1);
        release();
        s_logger.log(LogLevel::Fatal, "too late");
        s_logger.getLogger().log(LogLevel::Fatal, "too late");
        openEntry();
        std::_Exit(s_logger.isEnabled(LogLevel::Fatal) || !capture.records.empty() ? 2 : 0);
    };
    EXPECT_EXIT(useAfter([] { ACE_Object_Manager::instance()->fini(); }), testing::ExitedWithCode(0), "");
}

TEST(AceCleanupLoggerThreadTest, LoggersAreMadeAndLevelsChangedWhileOthersWork) {
    LogCapture capture;
    std::atomic<bool> stop{false};
    const std::vector<AceCleanupLogger*>& loggers = hundredLoggers();
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&] {
            while (!stop) {
                for (const AceCleanupLogger* logger : loggers) {
                    openEntry();
                    static_cast<void>(logger->isEnabled(LogLevel::Debug));
                }
            }
        });
    }
    for (int i = 0; i < 300; ++i)
        log4("tandril.kx").setLogLevel(i % 2 ? 30000 : 40000);
    stop = true;
    threads.clear();
    openEntry();
    for (const AceCleanupLogger* logger : loggers) {
        EXPECT_TRUE(logger->isEnabled(LogLevel::Warn));
        EXPECT_FALSE(logger->isEnabled(LogLevel::Info));
    }
}
