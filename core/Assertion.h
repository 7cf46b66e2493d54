#pragma once

#include "core/CoreApi.h"

namespace Oskan {

class AceCleanupLogger;
class Logger;

/** Guards a caller's contract: when the condition is false, reports it at level Fatal (to the logger given, else to
    "tandril.infra.Assertion") and on stderr, and aborts. Never reachable by input from the wire.

    The report is "Assertion failed: <condition>, file <file>, line <line>", the file and line left out where the
    caller gave none. A condition that holds costs a test. */
class KX_CORE_API Assertion {
public:
    /** @param text the condition as written, a literal. */
    constexpr Assertion(bool condition, const char* text, const char* file = nullptr, int line = -1) {
        if (!condition) [[unlikely]]
            sFail(text, file, line);
    }
    constexpr Assertion(bool condition, const char* text, const Logger& logger, const char* file = nullptr,
                        int line = -1) {
        if (!condition) [[unlikely]]
            sFail(text, logger, file, line);
    }
    constexpr Assertion(bool condition, const char* text, const AceCleanupLogger& logger, const char* file = nullptr,
                        int line = -1) {
        if (!condition) [[unlikely]]
            sFail(text, logger, file, line);
    }

    /** Reports and aborts. */
    [[noreturn, gnu::cold]] static void sFail(const char* text, const char* file = nullptr, int line = -1) noexcept;
    [[noreturn, gnu::cold]] static void sFail(const char* text, const Logger& logger, const char* file,
                                              int line) noexcept;
    [[noreturn, gnu::cold]] static void sFail(const char* text, const AceCleanupLogger& logger, const char* file,
                                              int line) noexcept;
    /** For a template's check of something that is nil: reports the text, the template's arguments, and the caller as
        an offset into its program or library, as addr2line takes it.
        @param function the __PRETTY_FUNCTION__ of a member of the template.
        @param caller a return address. */
    [[noreturn, gnu::cold]] static void sFailNil(const char* text, const char* function, const void* caller) noexcept;
};

} // namespace Oskan

/** Stops the process when the condition is false; the report carries the condition as written. */
#define OSKAN_ASSERT(condition) (static_cast<void>(::Oskan::Assertion((condition), #condition, __FILE__, __LINE__)))
