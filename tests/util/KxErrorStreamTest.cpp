#include "util/KxErrorStream.h"
#include "tests/core/LogCapture.h"
#include "util/KxException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <string>
#include <thread>

using testing::ElementsAre;

namespace {

KxOutputStream& streamOf(std::string_view name) {
    return KxErrorStream::sGetDefault().getDebugStream(name, 0);
}

} // namespace

TEST(KxErrorStreamTest, LinesBecomeRecords) {
    LogCapture capture;
    KxOutputStream& notes = streamOf("KxNotes");
    notes << "one" << endl
          << "t"
          << "wo\nthree";
    EXPECT_THAT(capture.texts(), ElementsAre("one", "two"));
    notes << '\r';
    notes << '\n' << "\n" << 4 << KxString("x");
    EXPECT_THAT(capture.texts(), ElementsAre("three", ""));
    notes.flush();
    notes.flush();
    ASSERT_EQ(capture.records.size(), 1U);
    EXPECT_EQ(capture.records[0].logger, "tandril.kx.KxNotes");
    EXPECT_EQ(capture.records[0].level, 10000);
    EXPECT_THAT(capture.texts(), ElementsAre("4x"));
}

TEST(KxErrorStreamTest, NamesDoNotMix) {
    LogCapture capture;
    KxOutputStream& first = streamOf("KxFirst");
    first << "half";
    streamOf("KxSecond") << "whole" << endl;
    first << " and half" << endl;
    EXPECT_EQ(&streamOf("KxFirst"), &first);
    EXPECT_THAT(capture.texts(), ElementsAre("whole", "half and half"));
}

TEST(KxErrorStreamTest, GivesTheSharedSinkWhileNobodyListens) {
    KxOutputStream& sink = streamOf("KxUnread");
    sink << "dropped" << endl;
    EXPECT_EQ(&streamOf("KxUnread"), &sink);
    LogCapture capture;
    EXPECT_NE(&streamOf("KxUnread"), &sink);
    log4cplus::Logger::getInstance("tandril.kx.KxUnread").setLogLevel(log4cplus::INFO_LOG_LEVEL);
    EXPECT_EQ(&streamOf("KxUnread"), &sink);
    log4cplus::Logger::getInstance("tandril.kx.KxUnread").setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
    EXPECT_NE(&streamOf("KxUnread"), &sink);
    EXPECT_TRUE(capture.records.empty());
}

TEST(KxErrorStreamTest, EndlessLinesAreLoggedInPieces) {
    LogCapture capture;
    streamOf("KxNotes") << std::string(40000, 'x') << endl;
    std::size_t total = 0;
    for (const std::string& text : capture.texts()) {
        EXPECT_LE(text.size(), 16384U);
        total += text.size();
    }
    EXPECT_EQ(total, 40000U);
}

TEST(KxErrorStreamTest, ExceptionsDisplayThemselves) {
    LogCapture capture;
    KxOutputStream& notes = streamOf(KxException::sDebugToken);
    KxMake<KxException>("Invalid Via header")->display(notes, true);
    notes.flush();
    EXPECT_THAT(capture.texts(), ElementsAre("Invalid Via header"));
}

TEST(KxErrorStreamThreadTest, LinesOfThreadsStayWhole) {
    constexpr int kLines = 2000;
    std::mutex mutex; // log4cplus has its own, which the thread sanitizer does not see
    std::map<std::string, int> counts;
    log4cplus::Logger::getRoot().addAppender(
        log4cplus::SharedAppenderPtr(new FunctionAppender([&](const LogRecord& record) {
            const std::lock_guard lock(mutex);
            ++counts[record.text];
        })));
    const auto write = [](char mark) {
        for (int i = 0; i < kLines; ++i) {
            KxOutputStream& notes = streamOf("KxNotes");
            for (int piece = 0; piece < 5; ++piece) {
                notes << mark;
            }
            notes << endl;
        }
        streamOf("KxNotes") << "last"; // logged when the thread ends
    };
    std::thread first(write, 'a');
    std::thread second(write, 'b');
    first.join();
    second.join();
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
    EXPECT_EQ(counts, (std::map<std::string, int>{{"aaaaa", kLines}, {"bbbbb", kLines}, {"last", 2}}));
}
