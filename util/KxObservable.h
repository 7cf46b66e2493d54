#pragma once

#include "util/KxHandle.h"
#include "util/UtilApi.h"

#include <cstddef>
#include <mutex>
#include <vector>

class KxObserver;

/** Keeps observers and notifies them in the order in which they were attached.

    Usable from any thread. One thread notifies at a time, and the calls of other threads wait until it has finished.
    After detachObserver has returned, the observer is not called any more, and no call of it is running on another
    thread. Therefore an observer that is being notified must not wait for a thread that uses the same observable. */
class KX_UTIL_API KxObservable {
public:
    KxObservable() = default;
    /** Observers belong to one object: a copy has none, and an assignment keeps those of its target. */
    KxObservable(const KxObservable&) {}
    KxObservable& operator=(const KxObservable&) { return *this; }
    virtual ~KxObservable();

    /** Returns false, without effect, when the observer is already attached. An observer that is attached during a
        notification is called from the next notification on. */
    bool attachObserver(KxObserver& observer);
    /** Returns false when the observer was not attached. */
    bool detachObserver(KxObserver& observer);
    std::size_t countObservers() const;

    /** Notifications are dropped until unblock has been called as often as block; further calls of unblock do nothing.
        A notification that is already running is finished. */
    void block();
    void unblock();

    /** Calls every observer, unless blocked. An exception from an observer ends the notification and is passed on. */
    void notifyObservers(const KxHandle<KxObject>& about = KxHandle<KxObject>());

private:
    std::size_t indexOf(const KxObserver& observer) const;

    mutable std::recursive_mutex m_mutex;
    std::vector<KxObserver*> m_observers; // null: detached while a notification was running
    std::size_t m_blocks = 0;
    std::size_t m_notifying = 0; // number of running notifications, nested in each other
};
