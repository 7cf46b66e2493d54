#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggerimpl.h>

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

    /** Nil for the root. */
    static const Impl* sParent(const Impl& impl) { return (impl.*(&Log4cplusAccess::parent)).get(); }

private:
    struct Handle : log4cplus::Logger {
        friend class Log4cplusAccess;
    };
};

} // namespace Oskan
