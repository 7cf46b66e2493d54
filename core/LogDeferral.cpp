#include "core/LogDeferral.h"

#include "core/AceCleanupLogger.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Oskan {

__thread unsigned t_logDeferrals __attribute__((tls_model("initial-exec"))) = 0;
__thread LogDeferral::Records* LogDeferral::t_kept __attribute__((tls_model("initial-exec"))) = nullptr;

struct LogDeferral::Records {
    struct Record {
        const AceCleanupLogger* logger;
        LogLevel level;
        std::string text;
        const char* source;
        int line;
    };
    std::vector<Record> all;
};

void LogDeferral::sKeep(const AceCleanupLogger& logger, LogLevel level, std::string_view text, const char* source,
                        int line) {
    if (t_kept == nullptr) {
        t_kept = new Records;
    }
    t_kept->all.push_back({&logger, level, std::string(text), source, line});
}

/** If an appender itself logs a record, that record is written at once: no deferral is open now, except one that the
    appender opened. */
void LogDeferral::sWrite() noexcept {
    const std::unique_ptr<Records> kept(std::exchange(t_kept, nullptr));
    for (const Records::Record& record : kept->all) {
        record.logger->log(record.level, record.text, record.source, record.line);
    }
}

} // namespace Oskan
