#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggerimpl.h>

#include <array>
#include <atomic>
#include <cstddef>

namespace Oskan {

/** The log4cplus side of a class's logger, made so that its level can be watched cheaply. log4cplus tells nobody of a
    changed level, so levels are polled, before every top-level operation: these loggers lie in one array at equal
    distances, and hardly ever has one a level of its own. Appenders go through virtual operations and are counted.
    Made by one thread at a time. Of this folder only. */
class PooledLoggerImpl final : public log4cplus::spi::LoggerImpl {
public:
    static constexpr std::size_t kSlots = 192;
    using Levels = std::array<std::atomic<int>, kSlots>;

    PooledLoggerImpl(const log4cplus::tstring& loggerName, log4cplus::Hierarchy& loggers) :
        LoggerImpl(loggerName, loggers) {}

    void addAppender(log4cplus::SharedAppenderPtr appender) override;
    void removeAllAppenders() override;
    void removeAppender(log4cplus::SharedAppenderPtr appender) override;
    void removeAppender(const log4cplus::tstring& appenderName) override;

    /** Takes the next slot; slots are never used again. */
    static void* operator new(std::size_t) { return &s_room[s_used++ * sizeof(PooledLoggerImpl)]; }
    static void operator delete(void*) {}

    static std::size_t sUsed() { return s_used; }
    /** The slot a logger lies in, or kSlots when it lies elsewhere. */
    static std::size_t sSlotOf(const LoggerImpl* impl);
    /** Grows with every appender added to or removed from one of these loggers. */
    static unsigned sAppenderChanges() { return s_appenderChanges.load(std::memory_order_acquire); }

    /** Whether none of the first slots' loggers has a level of its own: an instruction a logger. */
    __attribute__((no_sanitize("thread"))) static bool sNoneSet(std::size_t slots) {
        static_assert(log4cplus::NOT_SET_LOG_LEVEL == -1);
        int all = -1;
#pragma GCC unroll 8
        for (std::size_t i = 0; i < slots; ++i)
            all &= sAt(i)->ll;
        return all == -1;
    }

    /** Whether the first slots' loggers have these levels of their own. */
    __attribute__((no_sanitize("thread"))) static bool sAreSet(const Levels& levels, std::size_t slots) {
        int difference = 0;
#pragma GCC unroll 8
        for (std::size_t i = 0; i < slots; ++i)
            difference |= sAt(i)->ll ^ levels[i].load(std::memory_order_relaxed);
        return difference == 0;
    }

private:
    static PooledLoggerImpl* sAt(std::size_t slot);

    static std::byte s_room[];
    static std::size_t s_used;
    static std::atomic<unsigned> s_appenderChanges;
};

inline PooledLoggerImpl* PooledLoggerImpl::sAt(std::size_t slot) {
    return reinterpret_cast<PooledLoggerImpl*>(&s_room[slot * sizeof(PooledLoggerImpl)]);
}

/** Has log4cplus make its loggers of this kind, while there are slots. */
class PooledLoggerFactory final : public log4cplus::DefaultLoggerFactory {
protected:
    log4cplus::spi::LoggerImpl* makeNewLoggerImplInstance(const log4cplus::tstring& name,
                                                          log4cplus::Hierarchy& hierarchy) override;
};

} // namespace Oskan
