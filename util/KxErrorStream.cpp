#include "util/KxErrorStream.h"

#include "core/AceCleanupLogger.h"
#include "core/ForkLock.h"
#include "core/TraceScope.h"

#include <algorithm>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>

namespace {

constexpr std::size_t kLongestLine = 16 * 1024; // a longer one makes several records

/** Drops everything and has no state, so that threads may share it. Never destroyed. */
class NullStream final : public KxOutputStream {
protected:
    void writeBeyondWindow(const char*, std::size_t) override {}
};

class LogStream final : public KxOutputStream {
public:
    explicit LogStream(const Oskan::AceCleanupLogger& logger) : m_logger(logger) {}
    ~LogStream() override { LogStream::flush(); }

    const Oskan::AceCleanupLogger& logger() const { return m_logger; }

    void flush() override {
        if (!m_line.empty()) {
            logLine();
        }
    }

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override {
        std::string_view text(bytes, count);
        while (!text.empty()) {
            const std::string_view fitting = text.substr(0, kLongestLine - m_line.size());
            const std::string_view piece = fitting.substr(0, fitting.find('\n'));
            const bool isEnded = piece.size() != fitting.size();
            m_line += piece;
            text.remove_prefix(piece.size() + (isEnded ? 1 : 0));
            if (isEnded || m_line.size() == kLongestLine) {
                logLine();
            }
        }
    }

private:
    void logLine() {
        if (m_line.ends_with('\r')) {
            m_line.pop_back();
        }
        m_logger.log(Oskan::LogLevel::Debug, m_line);
        m_line.clear();
    }

    const Oskan::AceCleanupLogger& m_logger;
    std::string m_line;
};

/** A logger and the name it refers to. */
struct NamedLogger {
    explicit NamedLogger(std::string_view text) : name(text), logger(name.c_str()) {}

    std::string name;
    Oskan::AceCleanupLogger logger;
};

constinit std::mutex s_mutex; ///< Guards the named loggers.
const Oskan::ForkLockOf<s_mutex> s_forkLock{Oskan::ForkLock::Order::Streams};

/** The one logger of that name. Loggers live as long as the process. */
const Oskan::AceCleanupLogger& loggerNamed(std::string_view name) {
    static auto& s_loggers = *new std::list<NamedLogger>;
    const std::lock_guard lock(s_mutex);
    for (const NamedLogger& each : s_loggers) {
        if (each.name == name) {
            return each.logger;
        }
    }
    return s_loggers.emplace_back(name).logger;
}

constinit thread_local bool t_streamsAreGone = false;

/** The streams of a thread, by name. */
struct ThreadStreams {
    ~ThreadStreams() { t_streamsAreGone = true; }

    std::map<std::string, LogStream, std::less<>> all;
};

/** Returns the thread's stream of that name; null after the thread has dropped its streams at its end. */
LogStream* streamNamed(std::string_view name) {
    if (t_streamsAreGone) {
        return nullptr;
    }
    static thread_local ThreadStreams t_streams;
    auto at = t_streams.all.find(name);
    if (at == t_streams.all.end()) {
        at = t_streams.all.try_emplace(std::string(name), loggerNamed(name)).first;
    }
    return &at->second;
}

} // namespace

KxErrorStream& KxErrorStream::sGetDefault() {
    static constinit KxErrorStream s_default;
    return s_default;
}

KxOutputStream& KxErrorStream::getDebugStream(std::string_view name, int) {
    static auto& s_nothing = *new NullStream;
    const Oskan::EntryDepth upToDate;
    LogStream* const stream = streamNamed(name);
    if (stream == nullptr || !stream->logger().isEnabled(Oskan::LogLevel::Debug)) {
        return s_nothing;
    }
    return *stream;
}
