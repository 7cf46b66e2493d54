#pragma once

#include "util/UtilApi.h"

#include <mutex>

/** A mutex from the accounted allocator (account "KxMutex"), 40 bytes. Not recursive: a thread that locks it twice
    deadlocks. std::lock_guard<KxMutex> holds it while in scope. */
class KX_UTIL_API KxMutex {
public:
    KxMutex(const KxMutex&) = delete;
    KxMutex& operator=(const KxMutex&) = delete;

    /** A new unlocked mutex, never null. It is freed through sRecycle.
        @throws std::bad_alloc when there is no memory. */
    static KxMutex* sAllocate();
    /** Frees a mutex. No thread may hold it or wait for it. Null is allowed. */
    static void sRecycle(KxMutex* mutex) noexcept;

    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }

private:
    KxMutex() = default;
    ~KxMutex() = default;

    std::mutex m_mutex;
};
static_assert(sizeof(KxMutex) <= 40);
