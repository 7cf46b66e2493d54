#include "util/KxObject.h"

#include "core/ForkLock.h"
#include "util/KxHandle.h"
#include "util/KxOutputStream.h"

#include <functional>
#include <mutex>
#include <unordered_map>

namespace {

using Companions = std::unordered_multimap<const KxObject*, KxObject*>;

constinit std::mutex s_mutex; ///< Guards the companions.
const Oskan::ForkLockOf<s_mutex> s_forkLock{Oskan::ForkLock::Order::Companions};

Companions& companions() {
    static Companions* const all = new Companions; // never freed: handles may be destroyed after static destructors
    return *all;
}

} // namespace

void KxObject::releaseCompanions() {
    while (true) {
        Companions::node_type taken; // released without the lock
        {
            const std::lock_guard<std::mutex> lock(s_mutex);
            taken = companions().extract(this);
        }
        if (taken.empty()) {
            return;
        }
        taken.mapped()->Release(true);
    }
}

int KxObject::compareWith(const KxObject& other) const {
    return this == &other ? 0 : (std::less<>()(this, &other) ? -1 : 1);
}

std::uint32_t KxObject::hashCode() const {
    return static_cast<std::uint32_t>(std::hash<const KxObject*>()(this));
}

void KxObject::display(KxOutputStream& out, bool) const {
    out << "KxObject";
}

/** Destroys the object, whose other owners let go while this thread did. */
void KxObject::destroyShared() {
    m_count.fetch_add(1, std::memory_order_relaxed); // a handle made in a destructor must not destroy it again
    delete this;
}

void KxObject::keepCompanion(KxObject* companion) {
    KxHandle<KxObject> held(companion);
    const std::lock_guard<std::mutex> lock(s_mutex);
    companions().emplace(this, companion);
    held.detach();
    m_count.fetch_or(kHasCompanion, std::memory_order_relaxed);
}
