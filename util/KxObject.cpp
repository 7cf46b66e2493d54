#include "util/KxObject.h"

#include "util/KxHandle.h"
#include "util/KxOutputStream.h"

#include <functional>
#include <mutex>
#include <unordered_map>

namespace {

struct Companions {
    std::mutex mutex;
    std::unordered_multimap<const KxObject*, KxObject*> byObject;
};

Companions& companions() {
    static Companions* const all = new Companions; // reachable for ever: handles may go after static destructors
    return *all;
}

} // namespace

void KxObject::releaseCompanions() {
    std::unordered_multimap<const KxObject*, KxObject*> mine;
    {
        Companions& all = companions();
        const std::lock_guard<std::mutex> lock(all.mutex);
        for (auto [at, end] = all.byObject.equal_range(this); at != end;) {
            mine.insert(all.byObject.extract(at++));
        }
    }
    for (const auto& [object, companion] : mine) {
        companion->Release(true);
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

std::uint32_t KxObject::releaseShared(bool destroy) {
    const std::uint32_t left = (m_count.fetch_sub(1, std::memory_order_acq_rel) - 1) & kCountMask;
    if (left == 0 && destroy) {
        m_count.fetch_add(1, std::memory_order_relaxed); // a handle made in a destructor must not destroy it again
        delete this;
    }
    return left;
}

void KxObject::keepCompanion(KxObject* companion) {
    companion->AddRef();
    Companions& all = companions();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.byObject.emplace(this, companion);
    m_count.fetch_or(kHasCompanion, std::memory_order_relaxed);
}

void KxHandleBase::keepBeside(KxObject* object, KxObject* companion) {
    if (object != nullptr && companion != nullptr && !object->isImmortal()) {
        object->keepCompanion(companion);
    }
}
