#pragma once

#include "util/KxHandle.h"
#include "util/UtilApi.h"

class KxObservable;

/** Notified by the observables that it is attached to. It must be detached from all of them before it is destroyed. */
class KX_UTIL_API KxObserver {
public:
    virtual ~KxObserver();

    /** Called on the thread that notifies. It may attach and detach observers, including itself, block, unblock and
        notify again. It must not destroy `source`.
        @param about the argument of notifyObservers, often nil. */
    virtual void onNotification(KxObservable& source, const KxHandle<KxObject>& about) = 0;

protected:
    KxObserver() = default;
    KxObserver(const KxObserver&) = default;
    KxObserver& operator=(const KxObserver&) = default;
};
