#pragma once

#include "core/AceCleanupLogger.h"
#include "core/CoreApi.h"

namespace Oskan {

/** Logs, at level Trace, that a function was entered ("ENTER : KxSipHeader::parse") and left
    ("EXIT : KxSipHeader::parse"). A scope whose entry was not logged does not log its exit.
    When the level is off a scope costs a load and two tests; nothing is formatted. Never throws. */
class KX_CORE_API TraceScope {
public:
    /** @param functionName a literal. */
    [[gnu::always_inline]] TraceScope(const AceCleanupLogger& logger, const char* functionName) noexcept
        : m_logger(logger.isEnabled(LogLevel::Trace) ? sEnter(logger, functionName) : nullptr),
          m_functionName(functionName) {}
    [[gnu::always_inline]] ~TraceScope() {
        if (m_logger) [[unlikely]] {
            sExit(*m_logger, m_functionName);
        }
    }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

private:
    [[gnu::cold, gnu::noinline]] static const AceCleanupLogger* sEnter(const AceCleanupLogger& logger,
                                                                       const char* functionName) noexcept;
    [[gnu::cold, gnu::noinline]] static void sExit(const AceCleanupLogger& logger, const char* functionName) noexcept;

    const AceCleanupLogger* m_logger;
    const char* m_functionName;
};

/** In place of a TraceScope where the level is known to be off: does nothing. */
struct NoTraceScope {
    NoTraceScope(const AceCleanupLogger&, const char*) noexcept {}
};

/** EntryTraceScopes open on this thread. */
extern KX_CORE_API __thread unsigned t_entryDepth __attribute__((tls_model("initial-exec")));

/** Counts the operations open on this thread; opening the outermost one brings the log levels up to date. */
class EntryDepth {
public:
    EntryDepth() noexcept {
        if (t_entryDepth++ == 0) {
            refreshLogLevels();
        }
    }
    ~EntryDepth() { --t_entryDepth; }
    EntryDepth(const EntryDepth&) = delete;
    EntryDepth& operator=(const EntryDepth&) = delete;
};

/** The trace scope of a short operation that is nearly always part of another, such as copying: where it is not, a log
    level that was changed holds for it. Opens no operation itself. */
class LeafTraceScope : private TraceScope {
public:
    /** @param functionName a literal. */
    [[gnu::always_inline]] LeafTraceScope(const AceCleanupLogger& logger, const char* functionName) noexcept
        : TraceScope((sRefreshIfOutermost(), logger), functionName) {}

private:
    [[gnu::always_inline]] static void sRefreshIfOutermost() noexcept {
        if (t_entryDepth == 0) [[unlikely]] {
            refreshLogLevels();
        }
    }
};

/** The trace scope of an operation that a host calls directly: a log level that was changed before the outermost one
    opens holds within it. */
class EntryTraceScope : private EntryDepth, private TraceScope {
public:
    /** @param functionName a literal. */
    EntryTraceScope(const AceCleanupLogger& logger, const char* functionName) noexcept
        : TraceScope(logger, functionName) {}
};

} // namespace Oskan
