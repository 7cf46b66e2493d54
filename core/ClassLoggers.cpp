#include "core/ClassLoggers.h"

#include "core/Exception.h"
#include "core/ForkLock.h"
#include "core/Log4cplusAccess.h"
#include "core/PooledLoggerImpl.h"

#include <ace/Object_Manager.h>
#include <log4cplus/hierarchy.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <deque>
#include <mutex>

namespace Oskan {

namespace {

constexpr int kReleased = INT_MAX;   ///< As a cached level: nothing is logged any more.
constexpr int kUnread = INT_MAX - 1; ///< As a cached level: no appender would get a record.
constexpr int kNothingDisabled = -1;

constinit std::mutex s_mutex; ///< Guards making, updating and releasing.
const ForkLockOf<s_mutex> s_forkLock{ForkLock::Order::Loggers};
constinit bool s_released = false;

// What the poll reads, and what it compares with. Written under the mutex, after the cached levels.
constinit std::atomic<log4cplus::Hierarchy*> s_hierarchy{nullptr};
constinit std::atomic<std::size_t> s_slots{0};
constinit std::atomic<unsigned> s_appenderChanges{0};
constinit std::atomic<int> s_disabled{kNothingDisabled};

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

/** A logger that has a say in a class logger's level: its own, an ancestor's, the root. */
struct ClassLoggers::Node {
    log4cplus::Logger logger;
    Log4cplusAccess::Impl* impl;
    Node* parent;
    std::size_t slot; ///< Of a pooled logger, which is polled there.
    // Of a logger that is polled singly: the next one, and what was last seen.
    Node* nextPolled = nullptr;
    std::atomic<int> level{log4cplus::NOT_SET_LOG_LEVEL};
    std::atomic<const void*> appendersEnd{nullptr};

    // Of the update that is under way.
    int ownLevel = 0;
    const void* ownAppendersEnd = nullptr;
    int chainedLevel = 0;
    bool isRead = false;

    Node(const log4cplus::Logger& l, Node* p)
        : logger(l), impl(Log4cplusAccess::sImpl(l)), parent(p), slot(PooledLoggerImpl::sSlotOf(impl)) {}
};

struct ClassLoggers::ClassLogger {
    const AceCleanupLogger* owner;
    const Node* node;
    Logger logger;
};

/** Never destroyed, so that a thread that outlives main finds it. */
struct ClassLoggers::State {
    std::deque<Node> nodes; ///< Parents before children.
    std::deque<ClassLogger> classLoggers;
};

constinit ClassLoggers::State* ClassLoggers::s_state = nullptr;
constinit std::atomic<ClassLoggers::Node*> ClassLoggers::s_polled{nullptr};

namespace {

void releaseAtExit(void*, void*) {
    ClassLoggers::sRelease();
}

/** Releases before log4cplus is torn down, should ACE be torn down only later. */
struct ReleaseAtUnload {
    ~ReleaseAtUnload() {
        if (ClassLoggers::sRelease())
            ACE_Object_Manager::remove_at_exit(&s_mutex);
    }
};
const ReleaseAtUnload s_releaseAtUnload;

} // namespace

Logger& ClassLoggers::sNone() {
    static Logger none;
    return none;
}

void ClassLoggers::sMake(const AceCleanupLogger& logger) noexcept {
    try {
        const std::lock_guard lock(s_mutex);
        if (s_released)
            logger.m_level.store(kReleased, std::memory_order_relaxed);
        else if (!logger.m_logger.load(std::memory_order_relaxed))
            sMakeLocked(logger);
    } catch (...) {
        // Tried again at the next use.
    }
}

void ClassLoggers::sMakeLocked(const AceCleanupLogger& logger) {
    State& state = sState();
    const Node* const node = sNodeNamed(state, logger.getName());
    state.classLoggers.push_back({&logger, node, Logger(node->logger)});
    logger.m_logger.store(&state.classLoggers.back().logger, std::memory_order_release);
    sUpdateLocked(state);
}

ClassLoggers::State& ClassLoggers::sState() {
    if (s_state)
        return *s_state;
    log4cplus::Hierarchy& hierarchy = log4cplus::Logger::getDefaultHierarchy();
    ACE_Object_Manager::instance();
    if (ACE_Object_Manager::at_exit(&s_mutex, releaseAtExit, nullptr, "Oskan::ClassLoggers") != 0) {
        s_released = true; // The process is about to end.
        throw Exception("no logger is made while the process ends");
    }
    s_state = new State;
    sAddNode(*s_state, log4cplus::Logger::getRoot(), nullptr);
    s_hierarchy.store(&hierarchy, std::memory_order_release);
    return *s_state;
}

/** Makes the ancestors too, so that a host that configures one later configures the one that is watched. */
ClassLoggers::Node* ClassLoggers::sNodeNamed(State& state, const std::string& name) {
    const std::size_t dot = name.rfind('.');
    Node* const parent = dot == std::string::npos ? &state.nodes.front() : sNodeNamed(state, name.substr(0, dot));
    PooledLoggerFactory factory;
    const log4cplus::Logger logger = log4cplus::Logger::getInstance(name, factory);
    for (Node& node : state.nodes) {
        if (node.impl == Log4cplusAccess::sImpl(logger))
            return &node;
    }
    return sAddNode(state, logger, parent);
}

ClassLoggers::Node* ClassLoggers::sAddNode(State& state, const log4cplus::Logger& logger, Node* parent) {
    Node& node = state.nodes.emplace_back(logger, parent);
    if (node.slot == PooledLoggerImpl::kSlots) {
        node.nextPolled = s_polled.load(std::memory_order_relaxed);
        s_polled.store(&node, std::memory_order_release);
    }
    return &node;
}

Logger& ClassLoggers::sGet(const AceCleanupLogger& logger) {
    sMake(logger);
    Logger* const made = logger.m_logger.load(std::memory_order_acquire);
    return made ? *made : sNone();
}

Logger ClassLoggers::sCopy(const AceCleanupLogger& logger) {
    Logger& made = sGet(logger);
    const std::lock_guard lock(s_mutex);
    return made;
}

[[gnu::always_inline]] inline bool ClassLoggers::sChanged() noexcept {
    log4cplus::Hierarchy* const hierarchy = s_hierarchy.load(std::memory_order_acquire);
    if (!hierarchy)
        return false;
    if (!PooledLoggerImpl::sHaveRememberedLevels(s_slots.load(std::memory_order_acquire)))
        return true;
    for (const Node* node = s_polled.load(std::memory_order_acquire); node; node = node->nextPolled) {
        if (Log4cplusAccess::sOwnLevel(*node->impl) != node->level.load(std::memory_order_acquire) ||
            Log4cplusAccess::sAppendersEnd(*node->impl) != node->appendersEnd.load(std::memory_order_acquire))
            return true;
    }
    return PooledLoggerImpl::sAppenderChanges() != s_appenderChanges.load(std::memory_order_acquire) ||
           !isDisabledUpTo(*hierarchy, s_disabled.load(std::memory_order_acquire));
}

void ClassLoggers::sUpdate() noexcept {
    const std::lock_guard lock(s_mutex);
    if (!s_released && s_state)
        sUpdateLocked(*s_state);
}

/** Computes from levels read once, so that what the poll compares with is what the cached levels came from. */
void ClassLoggers::sUpdateLocked(State& state) {
    const unsigned appenderChanges = PooledLoggerImpl::sAppenderChanges();
    const int disabled = disabledUpTo(*s_hierarchy.load(std::memory_order_relaxed));
    for (Node& node : state.nodes) {
        node.ownLevel = Log4cplusAccess::sOwnLevel(*node.impl);
        node.ownAppendersEnd = Log4cplusAccess::sAppendersEnd(*node.impl);
        const bool inherits = node.parent && node.ownLevel == log4cplus::NOT_SET_LOG_LEVEL;
        node.chainedLevel = inherits ? node.parent->chainedLevel : node.ownLevel;
        // Additivity is left out of it: a record too many is dropped when it is logged.
        node.isRead = Log4cplusAccess::sHasAppender(*node.impl) || (node.parent && node.parent->isRead);
    }
    for (const ClassLogger& classLogger : state.classLoggers) {
        const Node& node = *classLogger.node;
        const int level = node.isRead ? std::max(node.chainedLevel, disabled + 1) : kUnread;
        classLogger.owner->m_level.store(level, std::memory_order_relaxed);
    }
    for (Node& node : state.nodes) {
        if (node.slot != PooledLoggerImpl::kSlots)
            PooledLoggerImpl::sRemember(node.slot, node.ownLevel);
        node.appendersEnd.store(node.ownAppendersEnd, std::memory_order_release);
        node.level.store(node.ownLevel, std::memory_order_release);
    }
    s_slots.store(PooledLoggerImpl::sUsed(), std::memory_order_release);
    s_disabled.store(disabled, std::memory_order_release);
    s_appenderChanges.store(appenderChanges, std::memory_order_release);
}

void refreshLogLevels() noexcept {
    if (ClassLoggers::sChanged()) [[unlikely]]
        ClassLoggers::sUpdate();
}

bool ClassLoggers::sRelease() noexcept {
    const std::lock_guard lock(s_mutex);
    const bool released = !s_released && s_state;
    s_released = true;
    if (!released)
        return false;
    s_hierarchy.store(nullptr, std::memory_order_release);
    s_polled.store(nullptr, std::memory_order_release);
    for (ClassLogger& classLogger : s_state->classLoggers) {
        classLogger.owner->m_level.store(kReleased, std::memory_order_relaxed);
        classLogger.logger = Logger();
    }
    for (Node& node : s_state->nodes)
        node.logger = log4cplus::Logger();
    return true;
}

} // namespace Oskan
