#include "core/AceCleanupLogger.h"

#include "LogCapture.h"
#include "core/Logger.h"
#include "core/SipLoggers.h"
#include "core/TraceScope.h"

#include <ace/Object_Manager.h>
#include <gtest/gtest.h>
#include <log4cplus/configurator.h>

#include <cstdlib>
#include <sstream>
#include <thread>
#include <tuple>

using Oskan::AceCleanupLogger;
using Oskan::EntryTraceScope;
using Oskan::LogLevel;

namespace {

constinit AceCleanupLogger s_logger{"KxAlpha"};
constinit AceCleanupLogger s_childLogger{"KxAlpha.UnknownTransportInContact"};
constinit AceCleanupLogger s_quietLogger{"KxQuiet"};
constinit AceCleanupLogger s_hostMadeLogger{"KxHostMade"};

void openEntry() {
    EntryTraceScope scope(s_quietLogger, "entry");
}

/** The root if the name is empty. */
log4cplus::Logger log4(const std::string& name) {
    return name.empty() ? log4cplus::Logger::getRoot() : log4cplus::Logger::getInstance(name);
}

/** Uses loggers after the process has released them: the run fails if that crashes. */
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
    Oskan::Logger(s_logger.getName() + ".Other").log(LogLevel::Fatal, "other child");
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
    const auto expectLowest = [](LogLevel lowest, LogLevel lowestOfChild) {
        openEntry();
        for (int i = 0; i < 6; ++i) {
            const LogLevel level{i * 10000};
            EXPECT_EQ(s_logger.isEnabled(level), level >= lowest) << i;
            EXPECT_EQ(s_childLogger.isEnabled(level), level >= lowestOfChild) << i;
        }
    };
    for (const auto& [name, level, lowest, lowestOfChild] :
         std::initializer_list<std::tuple<const char*, int, LogLevel, LogLevel>>{
             {"", 30000, LogLevel::Warn, LogLevel::Warn},
             {"tandril.kx", 20000, LogLevel::Info, LogLevel::Info},
             {"tandril", 50000, LogLevel::Info, LogLevel::Info},
             {"tandril.kx", -1, LogLevel::Fatal, LogLevel::Fatal},
             {"tandril.kx.KxAlpha", log4cplus::OFF_LOG_LEVEL, LogLevel::Off, LogLevel::Off},
             {"tandril.kx.KxAlpha", 0, LogLevel::Trace, LogLevel::Trace},
             {"tandril.kx.KxAlpha.UnknownTransportInContact", 40000, LogLevel::Trace, LogLevel::Error},
         }) {
        SCOPED_TRACE(std::string(name) + ' ' + std::to_string(level));
        log4(name).setLogLevel(level);
        expectLowest(lowest, lowestOfChild);
    }
    log4cplus::Logger::getDefaultHierarchy().disable(log4cplus::INFO_LOG_LEVEL);
    expectLowest(LogLevel::Warn, LogLevel::Error);
    log4cplus::Logger::getDefaultHierarchy().enableAll();
    expectLowest(LogLevel::Trace, LogLevel::Error);
    std::istringstream properties("log4cplus.logger.tandril.kx.KxAlpha=WARN");
    log4cplus::PropertyConfigurator(properties).configure();
    expectLowest(LogLevel::Warn, LogLevel::Error);
}

TEST(AceCleanupLoggerTest, WithoutAnAppenderAllIsOffAndNothingIsComplainedAbout) {
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
    log4cplus::SharedAppenderPtr reader(new FunctionAppender([](const LogRecord&) {}));
    const auto expectEnabled = [](bool enabled) {
        openEntry();
        EXPECT_EQ(s_logger.isEnabled(LogLevel::Fatal), enabled);
        EXPECT_EQ(s_childLogger.isEnabled(LogLevel::Fatal), enabled);
    };
    for (const char* name : {"", "tandril", "tandril.kx", "tandril.kx.KxAlpha"}) {
        SCOPED_TRACE(name);
        testing::internal::CaptureStderr();
        expectEnabled(false);
        s_logger.getLogger().log(LogLevel::Fatal, "nobody reads this");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        log4(name).addAppender(reader);
        expectEnabled(true);
        log4(name).removeAppender(reader);
        expectEnabled(false);
        LogCapture capture(log4(name));
        expectEnabled(true);
        log4("tandril.kx.KxAlpha").setAdditivity(false);
        s_logger.log(LogLevel::Debug, "to its own appenders only");
        EXPECT_EQ(capture.texts().size(), std::string(name) == "tandril.kx.KxAlpha" ? 1U : 0U);
    }
    log4("tandril.kx.KxHostMade"); // made by the host, before its class uses it
    EXPECT_FALSE(s_hostMadeLogger.isEnabled(LogLevel::Fatal));
    const LogCapture capture(log4("tandril.kx.KxHostMade"));
    openEntry();
    EXPECT_TRUE(s_hostMadeLogger.isEnabled(LogLevel::Fatal));
}

TEST_F(AceCleanupLoggerDeathTest, UseAfterReleaseDoesNothing) {
    const auto useAfterRelease = [] {
        LogCapture capture;
        openEntry();
        EntryTraceScope scope(s_logger, "open while released");
        const bool before = s_logger.isEnabled(LogLevel::Error);
        ACE_Object_Manager::instance()->fini();
        s_logger.log(LogLevel::Fatal, "too late");
        s_logger.getLogger().log(LogLevel::Fatal, "too late");
        openEntry();
        std::_Exit(before && !s_logger.isEnabled(LogLevel::Fatal) && capture.records.empty() ? 0 : 1);
    };
    EXPECT_EXIT(useAfterRelease(), testing::ExitedWithCode(0), "");
}

TEST(AceCleanupLoggerThreadTest, LoggersAreMadeAndLevelsChangedWhileOthersWork) {
    const LogCapture capture; // log4cplus calls an appender from one thread at a time
    static std::vector<AceCleanupLogger*>& loggers = *new std::vector<AceCleanupLogger*>; // never destroyed
    log4("tandril.kx.KxNo7"); // made by the host, before a class uses it
    for (int i = 0; i < 40; ++i) {
        loggers.push_back(new AceCleanupLogger((new std::string("KxNo" + std::to_string(i)))->c_str()));
    }
    std::atomic<bool> stop{false};
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&] {
            while (!stop) {
                for (const AceCleanupLogger* logger : loggers) {
                    openEntry();
                    logger->log(LogLevel::Warn, "while levels change");
                }
            }
        });
    }
    for (int i = 0; i < 300; ++i) {
        log4(i % 3 ? "tandril.kx" : "tandril.kx.KxNo7").setLogLevel(i % 2 ? 30000 : 40000);
    }
    stop = true;
    threads.clear();
    for (const AceCleanupLogger* logger : loggers) {
        for (const int level : {40000, 0, -1}) {
            log4(logger->getName()).setLogLevel(level);
            openEntry();
            ASSERT_EQ(logger->isEnabled(LogLevel::Debug), level == 0) << logger->getName();
            ASSERT_EQ(logger->isEnabled(LogLevel::Warn), level != 40000) << logger->getName();
        }
    }
}
