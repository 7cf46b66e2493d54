#include "util/KxErrorStream.h"

#include "core/AceCleanupLogger.h"
#include "core/ForkLock.h"
#include "core/TraceScope.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
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
    ~LogStream() override { logRest(); }

    const Oskan::AceCleanupLogger& logger() const { return m_logger; }

    void flush() override { logRest(); }

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override {
        std::string_view text(bytes, count);
        while (!text.empty()) {
            const std::size_t end = text.substr(0, kLongestLine - m_line.size()).find('\n');
            const std::string_view piece = text.substr(0, std::min(end, kLongestLine - m_line.size()));
            m_line += piece;
            text.remove_prefix(piece.size());
            if (end != std::string_view::npos) {
                text.remove_prefix(1);
                logLine();
            } else if (m_line.size() == kLongestLine) {
                logLine();
            }
        }
    }

private:
    void logRest() {
        if (!m_line.empty()) {
            logLine();
        }
    }
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
    static auto& s_loggers = *new std::map<std::string_view, NamedLogger*>;
    const std::lock_guard lock(s_mutex);
    const auto at = s_loggers.find(name);
    if (at != s_loggers.end()) {
        return at->second->logger;
    }
    auto made = std::make_unique<NamedLogger>(name);
    s_loggers.emplace(made->name, made.get());
    return made.release()->logger;
}

/** The streams of a thread, by name. */
class ThreadStreams {
public:
    ThreadStreams() = default;
    ~ThreadStreams() { t_areGone = true; }
    ThreadStreams(const ThreadStreams&) = delete;
    ThreadStreams& operator=(const ThreadStreams&) = delete;

    /** Returns null after the thread has dropped its streams at its end. */
    static LogStream* sFind(std::string_view name) {
        if (t_areGone) {
            return nullptr;
        }
        static thread_local ThreadStreams t_streams;
        auto at = t_streams.m_streams.find(name);
        if (at == t_streams.m_streams.end()) {
            at = t_streams.m_streams.try_emplace(std::string(name), loggerNamed(name)).first;
        }
        return &at->second;
    }

private:
    static constinit thread_local bool t_areGone;

    std::map<std::string, LogStream, std::less<>> m_streams;
};

constinit thread_local bool ThreadStreams::t_areGone = false;

} // namespace

KxErrorStream& KxErrorStream::sGetDefault() {
    static constinit KxErrorStream s_default;
    return s_default;
}

KxOutputStream& KxErrorStream::getDebugStream(std::string_view name, int) {
    static auto& s_nothing = *new NullStream;
    const Oskan::EntryDepth upToDate;
    LogStream* const stream = ThreadStreams::sFind(name);
    if (stream == nullptr || !stream->logger().isEnabled(Oskan::LogLevel::Debug)) {
        return s_nothing;
    }
    return *stream;
}
