#include "core/Assertion.h"

#include "core/Logger.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <string_view>

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

/** Reports and aborts. Writes to stderr first, because logging itself may be what fails.
    @param logger nil for "tandril.infra.Assertion". */
[[noreturn]] void stop(const char* text, const char* file, int line, const Logger* logger) noexcept {
    try {
        const std::string report = reportOf(text, file, line);
        std::fprintf(stderr, "%s\n", report.c_str());
        std::fflush(stderr);
        (logger != nullptr ? *logger : Logger("tandril.infra.Assertion")).log(LogLevel::Fatal, report, file, line);
    } catch (...) {
        std::fprintf(stderr, "Assertion failed: %s\n", text);
    }
    std::abort();
}

/** Returns "T = X" of "void C<T>::f() [with T = X]", as g++ writes it, or of "[T = X]", as clang++ does. */
std::string_view argumentsOf(std::string_view function) {
    const std::size_t open = function.rfind(" [");
    if (open == std::string_view::npos) {
        return function;
    }
    std::string_view arguments = function.substr(open + 2);
    arguments.remove_suffix(arguments.ends_with(']'));
    return arguments.starts_with("with ") ? arguments.substr(5) : arguments;
}

/** Returns the place of the call that precedes the return address, such as "libx.so+0x1234". */
std::string placeOf(const void* returnAddress) {
    const char* const call = static_cast<const char*>(returnAddress) - 1;
    Dl_info info{};
    if (dladdr(call, &info) == 0 || !info.dli_fname) {
        return "an unknown place";
    }
    char offset[24];
    std::snprintf(offset, sizeof offset, "+0x%tx", call - static_cast<const char*>(info.dli_fbase));
    return std::string(info.dli_fname) + offset;
}

} // namespace

void Assertion::sFailNil(const char* text, const char* function, const void* caller) noexcept {
    std::string report(text);
    report.append(", ").append(argumentsOf(function)).append(", called from ").append(placeOf(caller));
    sFail(report.c_str());
}

void Assertion::sFail(const char* text, const char* file, int line) noexcept {
    stop(text, file, line, nullptr);
}

void Assertion::sFail(const char* text, const Logger& logger, const char* file, int line) noexcept {
    stop(text, file, line, &logger);
}

} // namespace Oskan
