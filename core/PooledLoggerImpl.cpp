#include "core/PooledLoggerImpl.h"

namespace Oskan {

alignas(64) constinit std::byte PooledLoggerImpl::s_room[PooledLoggerImpl::kSlots * sizeof(PooledLoggerImpl)]{};
constinit std::size_t PooledLoggerImpl::s_used = 0;
constinit std::atomic<unsigned> PooledLoggerImpl::s_appenderChanges{0};

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
    for (std::size_t slot = 0; slot < s_used; ++slot) {
        if (sAt(slot) == impl)
            return slot;
    }
    return kSlots;
}

log4cplus::spi::LoggerImpl* PooledLoggerFactory::makeNewLoggerImplInstance(const log4cplus::tstring& name,
                                                                           log4cplus::Hierarchy& hierarchy) {
    if (PooledLoggerImpl::sUsed() == PooledLoggerImpl::kSlots)
        return DefaultLoggerFactory::makeNewLoggerImplInstance(name, hierarchy);
    return new PooledLoggerImpl(name, hierarchy);
}

} // namespace Oskan
