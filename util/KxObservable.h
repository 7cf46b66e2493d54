#pragma once

#include "util/KxHandle.h"
#include "util/UtilApi.h"

#include <cstddef>
#include <mutex>
#include <vector>

class KxObserver;

/** Keeps observers and notifies them in the order they were attached in.

    Usable from any thread. One thread notifies at a time, and meanwhile the other threads' calls wait: once
    detachObserver has returned, the observer is not called any more and no call of it is running on another thread.
    So an observer must not wait, while it is being notified, for a thread that uses the same observable. */
class KX_UTIL_API KxObservable {
public:
    KxObservable() = default;
    /** Observers belong to one object: a copy has none, and an assignment leaves those of its target. */
    KxObservable(const KxObservable&) {}
    KxObservable& operator=(const KxObservable&) { return *this; }
    virtual ~KxObservable();

    /** False, without effect, when the observer is attached already. One that is attached during a notification is
        first called by the next one. */
    bool attachObserver(KxObserver& observer);
    /** False when the observer was not attached. */
    bool detachObserver(KxObserver& observer);
    std::size_t countObservers() const;

    /** Notifications are dropped until unblock was called as often as block; more calls of unblock do nothing. A
        notification that is under way is finished. */
    void block();
    void unblock();

    /** Calls every observer, unless blocked. What an observer throws ends the notification and passes through. */
    void notifyObservers(const KxHandle<KxObject>& about = KxHandle<KxObject>());

private:
    class Notifying;

    std::size_t indexOf(const KxObserver& observer) const;

    mutable std::recursive_mutex m_mutex;
    std::vector<KxObserver*> m_observers; // null: detached while a notification was under way
    std::size_t m_blocks = 0;
    std::size_t m_notifying = 0; // notifications under way, one within the other
};
