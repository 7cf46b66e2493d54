#include "core/PooledLoggerImpl.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Oskan {

alignas(64) constinit std::byte PooledLoggerImpl::s_room[PooledLoggerImpl::kSlots * sizeof(PooledLoggerImpl)]{};
constinit const std::byte* PooledLoggerImpl::s_firstLevel = nullptr;
constinit std::size_t PooledLoggerImpl::s_used = 0;
constinit std::atomic<unsigned> PooledLoggerImpl::s_appenderChanges{0};
constinit std::array<std::atomic<int>, PooledLoggerImpl::kSlots> PooledLoggerImpl::s_remembered{};
constinit std::array<std::atomic<int>, PooledLoggerImpl::kSlots / PooledLoggerImpl::kGroup>
    PooledLoggerImpl::s_rememberedSet{};

PooledLoggerImpl::PooledLoggerImpl(const log4cplus::tstring& loggerName, log4cplus::Hierarchy& loggers)
    : LoggerImpl(loggerName, loggers) {
    if (!s_firstLevel)
        s_firstLevel = reinterpret_cast<const std::byte*>(&ll);
}

void* PooledLoggerImpl::operator new(std::size_t) {
    if (s_used % kGroup == 0) {
        std::memset(&s_room[s_used * sizeof(PooledLoggerImpl)], 0xff, kGroup * sizeof(PooledLoggerImpl));
        for (std::size_t slot = s_used; slot < s_used + kGroup; ++slot)
            s_remembered[slot].store(log4cplus::NOT_SET_LOG_LEVEL, std::memory_order_relaxed);
        s_rememberedSet[s_used / kGroup].store(log4cplus::NOT_SET_LOG_LEVEL, std::memory_order_relaxed);
    }
    return &s_room[s_used++ * sizeof(PooledLoggerImpl)];
}

void PooledLoggerImpl::sRemember(std::size_t slot, int level) {
    s_remembered[slot].store(level, std::memory_order_release);
    const std::size_t group = slot / kGroup;
    int set = -1;
    for (std::size_t i = group * kGroup; i < (group + 1) * kGroup; ++i)
        set &= s_remembered[i].load(std::memory_order_relaxed);
    s_rememberedSet[group].store(set, std::memory_order_release);
}

__attribute__((no_sanitize("thread"))) bool PooledLoggerImpl::sHasRememberedLevels(std::size_t group) {
    int difference = 0;
#pragma GCC unroll 16
    for (std::size_t i = 0; i < kGroup; ++i)
        difference |= sLevelAt(group * kGroup + i) ^ s_remembered[group * kGroup + i].load(std::memory_order_acquire);
    return difference == 0;
}

void PooledLoggerImpl::addAppender(log4cplus::SharedAppenderPtr appender) {
    LoggerImpl::addAppender(appender);
    ++s_appenderChanges;
}

void PooledLoggerImpl::removeAllAppenders() {
    LoggerImpl::removeAllAppenders();
    ++s_appenderChanges;
}

void PooledLoggerImpl::removeAppender(log4cplus::SharedAppenderPtr appender) {
    LoggerImpl::removeAppender(appender);
    ++s_appenderChanges;
}

void PooledLoggerImpl::removeAppender(const log4cplus::tstring& appenderName) {
    LoggerImpl::removeAppender(appenderName);
    ++s_appenderChanges;
}

std::size_t PooledLoggerImpl::sSlotOf(const LoggerImpl* impl) {
    const auto offset = reinterpret_cast<std::uintptr_t>(impl) - reinterpret_cast<std::uintptr_t>(&s_room[0]);
    return std::min<std::size_t>(offset / sizeof(PooledLoggerImpl), kSlots);
}

log4cplus::spi::LoggerImpl* PooledLoggerFactory::makeNewLoggerImplInstance(const log4cplus::tstring& name,
                                                                           log4cplus::Hierarchy& hierarchy) {
    if (PooledLoggerImpl::sUsed() == PooledLoggerImpl::kSlots)
        return DefaultLoggerFactory::makeNewLoggerImplInstance(name, hierarchy);
    return new PooledLoggerImpl(name, hierarchy);
}

} // namespace Oskan
