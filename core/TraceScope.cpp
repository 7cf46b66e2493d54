#include "core/TraceScope.h"

#include <string>

namespace Oskan {

__thread unsigned t_entryDepth __attribute__((tls_model("initial-exec"))) = 0;

namespace {

void trace(const AceCleanupLogger& logger, const char* what, const char* functionName) noexcept {
    try {
        logger.log(LogLevel::Trace, std::string(what) + functionName);
    } catch (...) {
        // The function that was to be traced goes on.
    }
}

} // namespace

const AceCleanupLogger* TraceScope::sEnter(const AceCleanupLogger& logger, const char* functionName) noexcept {
    trace(logger, "ENTER : ", functionName);
    return &logger;
}

void TraceScope::sExit(const AceCleanupLogger& logger, const char* functionName) noexcept {
    trace(logger, "EXIT : ", functionName);
}

} // namespace Oskan
