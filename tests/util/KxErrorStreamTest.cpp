#include "util/KxErrorStream.h"
#include "tests/core/LogCapture.h"
#include "util/KxException.h"

#include <gmock/gmock.h>

#include <map>
#include <mutex>
#include <thread>

using testing::ElementsAre;

static KxOutputStream& streamOf(std::string_view name) {
    return KxErrorStream::sGetDefault().getDebugStream(name, 0);
}

TEST(KxErrorStreamTest, LinesBecomeRecordsAndNamesDoNotMix) {
    LogCapture capture;
    KxOutputStream& notes = streamOf("KxNotes");
    notes << "one" << endl
          << "t"
          << "wo\nthree";
    EXPECT_THAT(capture.texts(), ElementsAre("one", "two"));
    streamOf("KxOther") << "whole" << endl;
    notes << '\r';
    notes << '\n' << "\n" << 4 << KxString("x");
    EXPECT_EQ(&streamOf("KxNotes"), &notes);
    EXPECT_THAT(capture.texts(), ElementsAre("whole", "three", ""));
    notes.flush();
    KxMake<KxException>("Invalid Via header")->display(streamOf(KxException::sDebugToken), true);
    ASSERT_EQ(capture.records.size(), 1U);
    EXPECT_EQ(capture.records[0].logger, "tandril.kx.KxNotes");
    EXPECT_EQ(capture.records[0].level, 10000);
    streamOf(KxException::sDebugToken).flush();
    EXPECT_THAT(capture.texts(), ElementsAre("4x", "Invalid Via header"));
}

TEST(KxErrorStreamTest, GivesTheSharedSinkWhileNobodyListens) {
    KxOutputStream& sink = streamOf("KxUnread");
    sink << "dropped" << endl;
    LogCapture capture;
    log4cplus::Logger logger = log4cplus::Logger::getInstance("tandril.kx.KxUnread");
    for (int i = 0; i < 2; ++i) {
        EXPECT_NE(&streamOf("KxUnread"), &sink);
        logger.setLogLevel(log4cplus::INFO_LOG_LEVEL);
        EXPECT_EQ(&streamOf("KxUnread"), &sink);
        logger.setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
    }
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

TEST(KxErrorStreamThreadTest, LinesOfThreadsStayWhole) {
    constexpr int kLines = 2000;
    std::mutex mutex; // the thread sanitizer does not see that of log4cplus
    std::map<std::string, int> counts;
    const LogCapture capture(log4cplus::Logger::getRoot(), [&](const LogRecord& record) {
        const std::lock_guard lock(mutex);
        ++counts[record.text];
    });
    const auto write = [](char mark) {
        for (int i = 0; i < kLines; ++i) {
            KxOutputStream& notes = streamOf("KxNotes");
            notes << mark << mark << mark << endl;
        }
        streamOf("KxNotes") << "last"; // logged when the thread ends
    };
    std::thread second(write, 'b');
    std::thread(write, 'a').join();
    second.join();
    EXPECT_EQ(counts, (std::map<std::string, int>{{"aaa", kLines}, {"bbb", kLines}, {"last", 2}}));
}
