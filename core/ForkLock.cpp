#include "core/ForkLock.h"

#include <mutex>
#include <pthread.h>

namespace Oskan {

/** The handlers that fork calls. A library may be loaded and add its locks while another thread forks, so the list of
    locks has a mutex. */
struct ForkLock::Handlers {
    static constinit std::mutex s_mutex;
    static constinit ForkLock* s_first; ///< The list is in the order in which the locks are taken.
    static constinit ForkLock* s_last;

    static void sPrepare() {
        s_mutex.lock();
        for (ForkLock* each = s_first; each; each = each->m_next)
            each->m_lock();
    }
    static void sDone() {
        for (ForkLock* each = s_last; each; each = each->m_previous)
            each->m_unlock();
        s_mutex.unlock();
    }
};
constinit std::mutex ForkLock::Handlers::s_mutex;
constinit ForkLock* ForkLock::Handlers::s_first = nullptr;
constinit ForkLock* ForkLock::Handlers::s_last = nullptr;

ForkLock::ForkLock(Order order, void (*lock)(), void (*unlock)()) noexcept
    : m_order(order), m_lock(lock), m_unlock(unlock), m_next(nullptr), m_previous(nullptr) {
    [[maybe_unused]] static const int s_registered =
        pthread_atfork(Handlers::sPrepare, Handlers::sDone, Handlers::sDone);
    const std::lock_guard guard(Handlers::s_mutex);
    m_next = Handlers::s_first;
    while (m_next && m_next->m_order <= m_order) {
        m_previous = m_next;
        m_next = m_next->m_next;
    }
    (m_previous ? m_previous->m_next : Handlers::s_first) = this;
    (m_next ? m_next->m_previous : Handlers::s_last) = this;
}

ForkLock::~ForkLock() {
    const std::lock_guard guard(Handlers::s_mutex);
    (m_previous ? m_previous->m_next : Handlers::s_first) = m_next;
    (m_next ? m_next->m_previous : Handlers::s_last) = m_previous;
}

} // namespace Oskan
