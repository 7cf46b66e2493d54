#pragma once

#include "util/KxHandle.h"
#include "util/UtilApi.h"

class KxObservable;

/** Told by the observables that it is attached to. Detached from all of them before it is destroyed. */
class KX_UTIL_API KxObserver {
public:
    virtual ~KxObserver();

    /** Called on the thread that notifies. May attach and detach observers, itself among them, block, unblock and
        notify again; may not destroy `source`.
        @param about what the notifier passed on, often nil. */
    virtual void onNotification(KxObservable& source, const KxHandle<KxObject>& about) = 0;

protected:
    KxObserver() = default;
    KxObserver(const KxObserver&) = default;
    KxObserver& operator=(const KxObserver&) = default;
};
