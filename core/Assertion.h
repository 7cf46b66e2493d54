#pragma once

#include "core/CoreApi.h"

namespace Oskan {

class Logger;

/** Checks a precondition that the caller must meet. When the condition is false, reports it on stderr and at level
    Fatal (to the logger given, else to "tandril.infra.Assertion"), and aborts. No input from the network can make an
    assertion fail.

    The report is "Assertion failed: <condition>, file <file>, line <line>", without the file and line if the caller
    gave none. A condition that is true costs one test. */
class KX_CORE_API Assertion {
public:
    /** @param text the condition as written, a literal. */
    constexpr Assertion(bool condition, const char* text, const char* file = nullptr, int line = -1) {
        if (!condition) [[unlikely]] {
            sFail(text, file, line);
        }
    }
    constexpr Assertion(bool condition, const char* text, const Logger& logger, const char* file = nullptr,
                        int line = -1) {
        if (!condition) [[unlikely]] {
            sFail(text, logger, file, line);
        }
    }

    /** Reports and aborts. */
    [[noreturn, gnu::cold]] static void sFail(const char* text, const char* file = nullptr, int line = -1) noexcept;
    [[noreturn, gnu::cold]] static void sFail(const char* text, const Logger& logger, const char* file,
                                              int line) noexcept;
    /** Reports that a member of a template found a nil pointer, and aborts. The report has the text, the template's
        arguments, and the caller as an offset into its program or library, as addr2line takes it.
        @param function the __PRETTY_FUNCTION__ of a member of the template.
        @param caller a return address. */
    [[noreturn, gnu::cold]] static void sFailNil(const char* text, const char* function, const void* caller) noexcept;
};

} // namespace Oskan

/** Aborts the process when the condition is false; the report contains the condition as written. */
#define OSKAN_ASSERT(condition) (static_cast<void>(::Oskan::Assertion((condition), #condition, __FILE__, __LINE__)))
