#pragma once

#include "core/CoreApi.h"
#include "core/LogLevel.h"

#include <string_view>

namespace Oskan {

class AceCleanupLogger;

/** Number of LogDeferrals open on this thread. */
extern KX_CORE_API __thread unsigned t_logDeferrals __attribute__((tls_model("initial-exec")));

/** While one is open, the records that its thread logs through AceCleanupLogger are kept, in order; the outermost one
    writes them when it closes. Open it before a lock is taken: then no appender of the host runs under the lock, and an
    appender may use what the lock guards. Costs an increment and a test when nothing is logged. A record for which
    there is no memory is lost. */
class KX_CORE_API LogDeferral {
public:
    LogDeferral() noexcept { ++t_logDeferrals; }
    ~LogDeferral() {
        if (--t_logDeferrals == 0 && t_kept != nullptr) [[unlikely]] {
            sWrite();
        }
    }
    LogDeferral(const LogDeferral&) = delete;
    LogDeferral& operator=(const LogDeferral&) = delete;

    /** Whether records are to be kept now. */
    static bool sIsOpen() noexcept { return t_logDeferrals != 0; }
    /** Keeps a record; may throw std::bad_alloc. */
    static void sKeep(const AceCleanupLogger& logger, LogLevel level, std::string_view text, const char* source,
                      int line);

private:
    struct Records;

    [[gnu::cold, gnu::noinline]] static void sWrite() noexcept;

    static __thread Records* t_kept __attribute__((tls_model("initial-exec")));
};

} // namespace Oskan
