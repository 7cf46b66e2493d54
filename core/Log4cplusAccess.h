#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggerimpl.h>

#include <memory>

namespace Oskan {

/** Reads what log4cplus keeps protected, where its public ways take locks, copy or call virtually. Levels and appender
    lists are read without a lock, as log4cplus itself reads the levels. Of this folder only. */
class Log4cplusAccess : private log4cplus::spi::LoggerImpl {
public:
    using Impl = log4cplus::spi::LoggerImpl;
    Log4cplusAccess() = delete;

    static Impl* sImpl(const log4cplus::Logger& logger) { return logger.*(&Handle::value); }

    __attribute__((no_sanitize("thread"))) static log4cplus::LogLevel sOwnLevel(const Impl& impl) {
        return impl.*(&Log4cplusAccess::ll);
    }

    __attribute__((no_sanitize("thread"))) static bool sHasAppender(const Impl& impl) {
        return !(impl.*(&Log4cplusAccess::appenderList)).empty();
    }

    /** The end of the appender list, which moves when the first appender comes and when the last one goes. */
    __attribute__((no_sanitize("thread"))) static const void* sAppendersEnd(const Impl& impl) {
        return std::to_address((impl.*(&Log4cplusAccess::appenderList)).end());
    }

    /** Nil for the root. */
    static const Impl* sParent(const Impl& impl) { return (impl.*(&Log4cplusAccess::parent)).get(); }

private:
    struct Handle : log4cplus::Logger {
        friend class Log4cplusAccess;
    };
};

} // namespace Oskan
