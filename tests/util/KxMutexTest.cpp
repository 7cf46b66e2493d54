#include "util/KxMutex.h"
#include "core/MemAccounts.h"

#include <gtest/gtest.h>

#include <thread>

TEST(KxMutexThreadTest, OneThreadAtATime) {
    const auto before = Oskan::MemAccounts::sGetUsage("KxMutex").liveObjects;
    KxMutex* const mutex = KxMutex::sAllocate();
    EXPECT_EQ(Oskan::MemAccounts::sGetUsage("KxMutex").liveObjects, before + 1);
    int count = 0;
    const auto work = [&] {
        for (int i = 0; i < 10000; ++i) {
            const std::lock_guard<KxMutex> lock(*mutex);
            ++count;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(count, 20000);
    KxMutex::sRecycle(mutex);
    KxMutex::sRecycle(nullptr);
    EXPECT_EQ(Oskan::MemAccounts::sGetUsage("KxMutex").liveObjects, before);
}
