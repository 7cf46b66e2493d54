#include "core/ClassLoggers.h"

#include "core/Exception.h"
#include "core/ForkLock.h"
#include "core/NotedLogger.h"

#include <ace/Object_Manager.h>
#include <log4cplus/hierarchy.h>
#include <log4cplus/spi/loggerimpl.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

namespace Oskan {

namespace {

using Impl = log4cplus::spi::LoggerImpl;

/** log4cplus does not report a change of a level, nor an appender that is added to the root or to a logger that the
    host made, so every operation has to look. The public interface copies the appenders of a logger under a lock, which
    would cost a fifth of reading a message; here they are read where they are, without a lock, as log4cplus itself
    reads the levels. */
struct Appenders : Impl {
    Appenders() = delete;
    /** The end of the list, which moves when the first one is added and when the last one is removed; 0 before. */
    __attribute__((no_sanitize("thread"))) static std::uintptr_t sEnd(const Impl& impl) {
        return reinterpret_cast<std::uintptr_t>(std::to_address((impl.*(&Appenders::appenderList)).end()));
    }
    __attribute__((no_sanitize("thread"))) static bool sHasOne(const Impl& impl) {
        return !(impl.*(&Appenders::appenderList)).empty();
    }
};
struct Handle : log4cplus::Logger {
    Handle() = delete;
    static const Impl* sImpl(const log4cplus::Logger& logger) { return logger.*(&Handle::value); }
};

constexpr int kReleased = INT_MAX;   ///< As a cached level: nothing is logged any more.
constexpr int kUnread = INT_MAX - 1; ///< As a cached level: no appender would get a record.
constexpr int kNotSet = log4cplus::NOT_SET_LOG_LEVEL;
static_assert(kNotSet == -1);
constexpr int kNothingDisabled = -1;

constinit std::mutex s_mutex; ///< Guards making, updating and releasing.
const ForkLockOf<s_mutex> s_forkLock{ForkLock::Order::Loggers};
constinit std::atomic<bool> s_released = false;

constinit std::atomic<int> s_writing{0};  ///< Number of Writing objects.
thread_local constinit int t_writing = 0; ///< Of this thread.
constinit pid_t s_process =
    0; ///< The one that made the first logger; in a child, other threads' objects are counted too.

constinit std::atomic<int> s_disabled{kNothingDisabled}; ///< What the cached levels were computed from.

/** The highest level that the hierarchy disables, as if levels went no further than Off. */
int disabledUpTo(log4cplus::Hierarchy& hierarchy) {
    int disabled = kNothingDisabled;
    int enabled = static_cast<int>(LogLevel::Off) + 1;
    while (enabled - disabled > 1) {
        const int middle = disabled + (enabled - disabled) / 2;
        (hierarchy.isDisabled(middle) ? disabled : enabled) = middle;
    }
    return disabled;
}

bool isDisabledUpTo(log4cplus::Hierarchy& hierarchy, int level) {
    return (level == kNothingDisabled || hierarchy.isDisabled(level)) &&
           (level == static_cast<int>(LogLevel::Off) || !hierarchy.isDisabled(level + 1));
}

} // namespace

/** A logger that has a say in the level of a class: its own, an ancestor's, the root. */
struct ClassLoggers::Node {
    // What refreshLogLevels reads: the logger, which another thread may have made only just now, and what the cached
    // levels were computed from. Written after them.
    std::atomic<const Impl*> impl{nullptr};
    std::atomic<int> level{kNotSet};
    std::atomic<std::uintptr_t> appendersEnd{0};

    Logger logger;
    const Node* parent = nullptr;
    std::atomic<const Node*> nextForeign{nullptr}; ///< In the list of those that are no NotedLogger.
    const AceCleanupLogger* owners = nullptr;      ///< The first; several files may name one class.

    // Of the update that is under way.
    int ownLevel = kNotSet;
    std::uintptr_t ownAppendersEnd = 0;
    int chainedLevel = 0;
    bool isRead = false;

    bool isAsSeen() const {
        const Impl& now = *impl.load(std::memory_order_acquire);
        return now.getLogLevel() == level.load(std::memory_order_acquire) &&
               Appenders::sEnd(now) == appendersEnd.load(std::memory_order_acquire);
    }
    void look();
};

/** Nodes that are looked at together, in three instructions each while none has a level or an appender of its own,
    which is the usual case. */
struct ClassLoggers::Group {
    static constexpr std::size_t kNodes = 16;

    Node nodes[kNodes]; ///< Those not used yet refer to the logger of the first one.
    std::size_t used = 0;
    std::atomic<int> seenLevels{kNotSet};         ///< Of all nodes, and-ed.
    std::atomic<std::uintptr_t> seenAppenders{0}; ///< Of all nodes, or-ed.
    std::atomic<Group*> next{nullptr};

    bool isAsSeen() const {
        int levels = seenLevels.load(std::memory_order_acquire);
        std::uintptr_t appenders = seenAppenders.load(std::memory_order_acquire);
#pragma GCC unroll 16
        for (const Node& node : nodes) {
            const Impl& now = *node.impl.load(std::memory_order_acquire);
            levels &= now.getLogLevel();
            appenders |= Appenders::sEnd(now);
        }
        return (levels == kNotSet && appenders == 0) || hasSeenValues();
    }
    [[gnu::noinline]] bool hasSeenValues() const {
        int otherLevel = 0;
        std::uintptr_t otherAppender = 0;
#pragma GCC unroll 16
        for (const Node& node : nodes) {
            const Impl& now = *node.impl.load(std::memory_order_acquire);
            otherLevel |= now.getLogLevel() ^ node.level.load(std::memory_order_acquire);
            otherAppender |= Appenders::sEnd(now) ^ node.appendersEnd.load(std::memory_order_acquire);
        }
        return otherLevel == 0 && otherAppender == 0;
    }
    void publish();
};

/** Never destroyed, so that a thread that outlives main finds it. */
struct ClassLoggers::State {
    log4cplus::Hierarchy& hierarchy = log4cplus::Logger::getDefaultHierarchy();
    Node root;
    Group first;
    Group* last = &first;
    Node* lastForeign = &root;
    std::atomic<unsigned> seenAdded{0}; ///< NotedLogger::sAdded() before the cached levels were computed.
    std::atomic<bool> anyIsRead{false}; ///< False while all cached levels are kUnread.

    /** Whether the cached levels are those that would be computed now. While no record is read, levels don't matter. */
    bool isAsSeen() const {
        if (!anyIsRead.load(std::memory_order_acquire) && hasNoNewAppender()) {
            return true;
        }
        if (!root.isAsSeen() || !isDisabledUpTo(hierarchy, s_disabled.load(std::memory_order_acquire))) {
            return false;
        }
        for (const Group* group = &first; group; group = group->next.load(std::memory_order_acquire)) {
            if (!group->isAsSeen()) {
                return false;
            }
        }
        return true;
    }
    bool hasNoNewAppender() const {
        for (const Node* node = &root; node; node = node->nextForeign.load(std::memory_order_acquire)) {
            const Impl& now = *node->impl.load(std::memory_order_acquire);
            if (Appenders::sEnd(now) != node->appendersEnd.load(std::memory_order_acquire)) {
                return false;
            }
        }
        return NotedLogger::sAdded() == seenAdded.load(std::memory_order_acquire);
    }

    template <class Function>
    void forEachGroup(Function function) {
        for (Group* group = &first; group; group = group->next.load(std::memory_order_relaxed)) {
            function(*group);
        }
    }
    /** Parents come before children. */
    template <class Function>
    void forEachNode(Function function) {
        function(root);
        forEachGroup([&](Group& group) { std::for_each(group.nodes, group.nodes + group.used, function); });
    }
};

constinit ClassLoggers::State* ClassLoggers::s_state = nullptr;
constinit std::atomic<ClassLoggers::State*> ClassLoggers::s_watched{nullptr};

namespace {

/** Waits until no other thread writes a record. */
void awaitWriters() noexcept {
    constexpr std::chrono::milliseconds kStep(1);
    for (int steps = 0; steps < 1000 && s_writing > t_writing && getpid() == s_process; ++steps) {
        std::this_thread::sleep_for(kStep);
    }
}

void releaseAtExit(void*, void*) {
    ClassLoggers::sRelease();
}

/** Releases before log4cplus is torn down, should ACE be torn down only later. */
struct ReleaseAtUnload {
    ~ReleaseAtUnload() {
        if (ClassLoggers::sRelease()) {
            ACE_Object_Manager::remove_at_exit(&s_mutex);
        }
    }
};
const ReleaseAtUnload s_releaseAtUnload;

} // namespace

/** Reads the level once, so that what is published is what the cached levels were computed from. */
void ClassLoggers::Node::look() {
    const Impl& now = *impl.load(std::memory_order_acquire);
    ownLevel = now.getLogLevel();
    ownAppendersEnd = Appenders::sEnd(now);
    chainedLevel = parent && ownLevel == kNotSet ? parent->chainedLevel : ownLevel;
    // Additivity is ignored: a record too many is dropped when it is logged.
    isRead = Appenders::sHasOne(now) || (parent && parent->isRead);
}

void ClassLoggers::Group::publish() {
    int levels = kNotSet;
    std::uintptr_t appenders = 0;
    for (std::size_t i = 0; i < kNodes; ++i) {
        const Node& node = nodes[i < used ? i : 0];
        nodes[i].level.store(node.ownLevel, std::memory_order_release);
        nodes[i].appendersEnd.store(node.ownAppendersEnd, std::memory_order_release);
        levels &= node.ownLevel;
        appenders |= node.ownAppendersEnd;
    }
    seenLevels.store(levels, std::memory_order_release);
    seenAppenders.store(appenders, std::memory_order_release);
}

Logger& ClassLoggers::sNone() {
    static Logger& none = *new Logger; // never destroyed
    return none;
}

void ClassLoggers::sMake(const AceCleanupLogger& owner) noexcept {
    try {
        const std::lock_guard lock(s_mutex);
        if (s_released) {
            owner.m_level.store(kReleased, std::memory_order_relaxed);
        } else if (!owner.m_logger.load(std::memory_order_relaxed)) {
            State& state = sState();
            Node& node = sNodeNamed(state, owner.getName());
            owner.m_nextOwner = node.owners;
            node.owners = &owner;
            owner.m_logger.store(&node.logger, std::memory_order_release);
            sUpdateLocked(state);
        }
    } catch (...) {
        // Tried again at the next use.
    }
}

ClassLoggers::State& ClassLoggers::sState() {
    if (s_state) {
        return *s_state;
    }
    log4cplus::Logger::getDefaultHierarchy(); // Made before ACE's object manager, to outlive it.
    ACE_Object_Manager::instance();
    if (ACE_Object_Manager::at_exit(&s_mutex, releaseAtExit, nullptr, "Oskan::ClassLoggers") != 0) {
        s_released = true; // The process is about to end.
        throw Exception("no logger is made while the process ends");
    }
    s_process = getpid();
    s_state = new State;
    s_state->root.logger = Logger(log4cplus::Logger::getRoot());
    s_state->root.impl.store(Handle::sImpl(s_state->root.logger.m_logger), std::memory_order_release);
    return *s_state;
}

/** Makes the ancestors too, so that a host that configures one later configures the one that is watched. */
ClassLoggers::Node& ClassLoggers::sNodeNamed(State& state, const std::string& name) {
    const std::size_t dot = name.rfind('.');
    const Node& parent = dot == std::string::npos ? state.root : sNodeNamed(state, name.substr(0, dot));
    const Logger logger(NotedLogger::sGet(name));
    const Impl* const impl = Handle::sImpl(logger.m_logger);
    Node* found = nullptr;
    state.forEachNode([&](Node& node) { found = node.impl == impl ? &node : found; });
    if (found) {
        return *found;
    }
    Group* const fresh = state.last->used == Group::kNodes ? new Group : nullptr;
    Group& group = fresh ? *fresh : *state.last;
    Node& node = group.nodes[group.used];
    node.logger = logger;
    node.parent = &parent;
    for (Node* each = &node; each != group.nodes + (group.used == 0 ? Group::kNodes : group.used + 1); ++each) {
        each->impl.store(impl, std::memory_order_release);
    }
    if (!dynamic_cast<const NotedLogger*>(impl)) {
        state.lastForeign->nextForeign.store(&node, std::memory_order_release);
        state.lastForeign = &node;
    }
    ++group.used;
    if (fresh) {
        state.last->next.store(fresh, std::memory_order_release);
        state.last = fresh;
    }
    return node;
}

Logger& ClassLoggers::sGet(const AceCleanupLogger& owner) {
    sMake(owner);
    Logger* const made = owner.m_logger.load(std::memory_order_acquire);
    return made && !s_released ? *made : sNone();
}

Logger ClassLoggers::sCopy(const AceCleanupLogger& owner) {
    const Logger& made = sGet(owner);
    const std::lock_guard lock(s_mutex);
    return made;
}

void ClassLoggers::sUpdate() noexcept {
    const std::lock_guard lock(s_mutex);
    if (!s_released) {
        sUpdateLocked(*s_state);
    }
}

void ClassLoggers::sUpdateLocked(State& state) {
    const int disabled = disabledUpTo(state.hierarchy);
    bool anyIsRead = false;
    state.seenAdded.store(NotedLogger::sAdded(), std::memory_order_release);
    state.forEachNode([&](Node& node) {
        node.look();
        anyIsRead = anyIsRead || node.isRead;
        const int level = node.isRead ? std::max(node.chainedLevel, disabled + 1) : kUnread;
        for (const AceCleanupLogger* owner = node.owners; owner; owner = owner->m_nextOwner) {
            owner->m_level.store(level, std::memory_order_relaxed);
        }
    });
    state.root.level.store(state.root.ownLevel, std::memory_order_release);
    state.root.appendersEnd.store(state.root.ownAppendersEnd, std::memory_order_release);
    state.forEachGroup([](Group& group) { group.publish(); });
    s_disabled.store(disabled, std::memory_order_release);
    state.anyIsRead.store(anyIsRead, std::memory_order_release);
    s_watched.store(&state, std::memory_order_release);
}

void refreshLogLevels() noexcept {
    const ClassLoggers::State* const state = ClassLoggers::s_watched.load(std::memory_order_acquire);
    if (state && !state->isAsSeen()) [[unlikely]] {
        ClassLoggers::sUpdate();
    }
}

/** The loggers are kept, because another thread may be looking at their levels. */
bool ClassLoggers::sRelease() noexcept {
    {
        const std::lock_guard lock(s_mutex);
        if (s_released.exchange(true) || !s_state) {
            return false;
        }
        s_watched.store(nullptr, std::memory_order_release);
        s_state->forEachNode([](Node& node) {
            for (const AceCleanupLogger* owner = node.owners; owner; owner = owner->m_nextOwner) {
                owner->m_level.store(kReleased, std::memory_order_relaxed);
            }
        });
    }
    awaitWriters();
    return true;
}

ClassLoggers::Writing::Writing() noexcept {
    ++t_writing;
    ++s_writing;
    m_isAllowed = !s_released; // after the count, so that sRelease sees the one or this sees the other
}

ClassLoggers::Writing::~Writing() {
    --s_writing;
    --t_writing;
}

} // namespace Oskan
