#include "util/KxObservable.h"

#include "util/KxObserver.h"

#include <algorithm>

/** While one is in scope, observers keep their positions in the list. */
class KxObservable::Notifying {
public:
    explicit Notifying(KxObservable& observable) : m_observable(observable) { ++m_observable.m_notifying; }
    ~Notifying() {
        if (--m_observable.m_notifying == 0) {
            std::erase(m_observable.m_observers, nullptr);
        }
    }
    Notifying(const Notifying&) = delete;
    Notifying& operator=(const Notifying&) = delete;

private:
    KxObservable& m_observable;
};

KxObservable::~KxObservable() = default;

std::size_t KxObservable::indexOf(const KxObserver& observer) const {
    const auto at = std::find(m_observers.begin(), m_observers.end(), &observer);
    return static_cast<std::size_t>(at - m_observers.begin());
}

bool KxObservable::attachObserver(KxObserver& observer) {
    const std::lock_guard lock(m_mutex);
    if (indexOf(observer) != m_observers.size()) {
        return false;
    }
    m_observers.push_back(&observer);
    return true;
}

bool KxObservable::detachObserver(KxObserver& observer) {
    const std::lock_guard lock(m_mutex);
    const std::size_t index = indexOf(observer);
    if (index == m_observers.size()) {
        return false;
    }
    if (m_notifying != 0) {
        m_observers[index] = nullptr;
    } else {
        m_observers.erase(m_observers.begin() + static_cast<std::ptrdiff_t>(index));
    }
    return true;
}

std::size_t KxObservable::countObservers() const {
    const std::lock_guard lock(m_mutex);
    const auto detached = std::count(m_observers.begin(), m_observers.end(), nullptr);
    return m_observers.size() - static_cast<std::size_t>(detached);
}

void KxObservable::block() {
    const std::lock_guard lock(m_mutex);
    ++m_blocks;
}

void KxObservable::unblock() {
    const std::lock_guard lock(m_mutex);
    if (m_blocks != 0) {
        --m_blocks;
    }
}

void KxObservable::notifyObservers(const KxHandle<KxObject>& about) {
    const std::lock_guard lock(m_mutex);
    if (m_blocks != 0) {
        return;
    }
    const Notifying notifying(*this);
    const std::size_t count = m_observers.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (m_observers[i] != nullptr) {
            m_observers[i]->onNotification(*this, about);
        }
    }
}
