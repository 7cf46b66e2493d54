#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggerimpl.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <type_traits>

namespace Oskan {

/** The log4cplus side of a class's logger, made so that its level can be watched cheaply. log4cplus tells nobody of a
    changed level, so levels are polled, before every top-level operation: these loggers lie in one array at equal
    distances, and hardly ever has one a level of its own. Appenders go through virtual operations and are counted.
    Made by one thread at a time. Of this folder only. */
class PooledLoggerImpl final : public log4cplus::spi::LoggerImpl {
public:
    static constexpr std::size_t kSlots = 192;

    PooledLoggerImpl(const log4cplus::tstring& loggerName, log4cplus::Hierarchy& loggers);

    void addAppender(log4cplus::SharedAppenderPtr appender) override;
    void removeAllAppenders() override;
    void removeAppender(log4cplus::SharedAppenderPtr appender) override;
    void removeAppender(const log4cplus::tstring& appenderName) override;

    /** Takes the next slot; slots are never used again. */
    static void* operator new(std::size_t);
    static void operator delete(void*) {}

    static std::size_t sUsed() { return s_used; }
    /** The slot a logger lies in, or kSlots when it lies elsewhere. */
    static std::size_t sSlotOf(const LoggerImpl* impl);
    /** Grows with every appender added to or removed from one of these loggers. */
    static unsigned sAppenderChanges() { return s_appenderChanges.load(std::memory_order_acquire); }

    /** Whether the loggers of the first slots have the levels last remembered. An instruction a slot, in groups,
        where none of a group has a level of its own and none had. */
    __attribute__((no_sanitize("thread"))) static bool sHaveRememberedLevels(std::size_t slots) {
        static_assert(log4cplus::NOT_SET_LOG_LEVEL == -1 && std::is_same_v<log4cplus::LogLevel, int>);
        for (std::size_t group = 0; group * kGroup < slots; ++group) {
            int set = s_rememberedSet[group].load(std::memory_order_acquire);
#pragma GCC unroll 16
            for (std::size_t i = 0; i < kGroup; ++i)
                set &= sLevelAt(group * kGroup + i);
            if (set != -1 && !sHasRememberedLevels(group)) [[unlikely]]
                return false;
        }
        return true;
    }

    static void sRemember(std::size_t slot, int level);

private:
    static constexpr std::size_t kGroup = 16;
    static_assert(kSlots % kGroup == 0);

    /** Of the logger in a slot; not set when there is none. */
    __attribute__((no_sanitize("thread"))) static int sLevelAt(std::size_t slot) {
        return *reinterpret_cast<const int*>(s_firstLevel + slot * sizeof(PooledLoggerImpl));
    }
    static bool sHasRememberedLevels(std::size_t group);

    static std::byte s_room[];
    static const std::byte* s_firstLevel; ///< Where the level of the first slot's logger lies.
    static std::size_t s_used;
    static std::atomic<unsigned> s_appenderChanges;
    static std::array<std::atomic<int>, kSlots> s_remembered;
    static std::array<std::atomic<int>, kSlots / kGroup> s_rememberedSet; ///< A group's levels, and-ed.
};

/** Has log4cplus make its loggers of this kind, while there are slots. */
class PooledLoggerFactory final : public log4cplus::DefaultLoggerFactory {
protected:
    log4cplus::spi::LoggerImpl* makeNewLoggerImplInstance(const log4cplus::tstring& name,
                                                          log4cplus::Hierarchy& hierarchy) override;
};

} // namespace Oskan
