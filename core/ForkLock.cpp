#include "core/ForkLock.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <pthread.h>

namespace Oskan {

namespace {

struct Lock {
    void (*lock)() = nullptr;
    void (*unlock)() = nullptr;
};

constinit std::mutex s_mutex; ///< A library may be loaded and add its lock while another thread forks.
constinit std::array<Lock, static_cast<std::size_t>(ForkLock::Order::Pool) + 1> s_locks{};

void prepare() {
    s_mutex.lock();
    for (const Lock& each : s_locks) {
        if (each.lock != nullptr) {
            each.lock();
        }
    }
}

void done() {
    std::for_each(s_locks.rbegin(), s_locks.rend(), [](const Lock& each) {
        if (each.unlock != nullptr) {
            each.unlock();
        }
    });
    s_mutex.unlock();
}

} // namespace

ForkLock::ForkLock(Order order, void (*lock)(), void (*unlock)()) noexcept : m_order(order) {
    [[maybe_unused]] static const int s_registered = pthread_atfork(prepare, done, done);
    const std::lock_guard guard(s_mutex);
    s_locks[static_cast<std::size_t>(order)] = {lock, unlock};
}

ForkLock::~ForkLock() {
    const std::lock_guard guard(s_mutex);
    s_locks[static_cast<std::size_t>(m_order)] = {};
}

} // namespace Oskan
