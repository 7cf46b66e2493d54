#include "core/Assertion.h"

#include "core/AceCleanupLogger.h"
#include "core/Logger.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Oskan {

namespace {

std::string reportOf(const char* text, const char* file, int line) {
    std::string report = "Assertion failed: ";
    report += text;
    if (file) {
        report += ", file ";
        report += file;
        report += ", line ";
        report += std::to_string(line);
    }
    return report;
}

/** On stderr first, since logging may itself be what is broken. */
template <class Log>
[[noreturn]] void stop(const char* text, const char* file, int line, const Log& log) noexcept {
    try {
        const std::string report = reportOf(text, file, line);
        std::fprintf(stderr, "%s\n", report.c_str());
        std::fflush(stderr);
        log(report);
    } catch (...) {
        std::fprintf(stderr, "Assertion failed: %s\n", text);
    }
    std::abort();
}

} // namespace

void Assertion::sFail(const char* text, const char* file, int line) noexcept {
    stop(text, file, line, [=](const std::string& report) {
        Logger("tandril.infra.Assertion").log(LogLevel::Fatal, report, file, line);
    });
}

void Assertion::sFail(const char* text, const Logger& logger, const char* file, int line) noexcept {
    stop(text, file, line,
         [&, file, line](const std::string& report) { logger.log(LogLevel::Fatal, report, file, line); });
}

void Assertion::sFail(const char* text, const AceCleanupLogger& logger, const char* file, int line) noexcept {
    stop(text, file, line,
         [&, file, line](const std::string& report) { logger.log(LogLevel::Fatal, report, file, line); });
}

} // namespace Oskan
