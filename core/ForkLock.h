#pragma once

#include "core/CoreApi.h"

namespace Oskan {

/** Takes a mutex of the process around every fork, so that the child, which has one thread only, finds it free and what
    it guards whole. Made at load, next to the mutex. */
class KX_CORE_API ForkLock {
public:
    /** What may be held while another mutex is taken comes before that one. */
    enum class Order { Lists, Companions, Streams, Loggers, Configuration, Parameters, Accounts, Pool };

    ForkLock(Order order, void (*lock)(), void (*unlock)()) noexcept;
    ~ForkLock();
    ForkLock(const ForkLock&) = delete;
    ForkLock& operator=(const ForkLock&) = delete;

private:
    struct Handlers;

    const Order m_order;
    void (*const m_lock)();
    void (*const m_unlock)();
    ForkLock* m_next;
    ForkLock* m_previous;
};

/** A ForkLock of one mutex.
    @tparam kMutex has lock and unlock, and static storage duration. No recursive mutex: it knows its thread, and the
    child's is another one. */
template <auto& kMutex>
class ForkLockOf : public ForkLock {
public:
    explicit ForkLockOf(Order order)
        : ForkLock(
              order, [] { kMutex.lock(); }, [] { kMutex.unlock(); }) {}
};

} // namespace Oskan
