#pragma once

#include "core/CoreApi.h"

namespace Oskan {

/** Holds a mutex of the process during every fork. The child, which has only one thread, then finds the mutex free and
    the data that it guards consistent. Made when the library is loaded, next to the mutex. */
class KX_CORE_API ForkLock {
public:
    /** The order in which the mutexes are taken: one that may be held while another is taken comes before it. There is
        one ForkLock for each. */
    enum class Order { Lists, Companions, Streams, Loggers, Configuration, Parameters, Accounts, Pool };

    ForkLock(Order order, void (*lock)(), void (*unlock)()) noexcept;
    ~ForkLock();
    ForkLock(const ForkLock&) = delete;
    ForkLock& operator=(const ForkLock&) = delete;

private:
    const Order m_order;
};

/** A ForkLock of one mutex.
    @tparam kMutex has lock and unlock, and static storage duration. It must not be recursive: a recursive mutex records
    the thread that holds it, and the child's thread is another one. */
template <auto& kMutex>
class ForkLockOf : public ForkLock {
public:
    explicit ForkLockOf(Order order)
        : ForkLock(
              order, [] { kMutex.lock(); }, [] { kMutex.unlock(); }) {}
};

} // namespace Oskan
