#include "util/KxObservable.h"

#include "util/KxObserver.h"

#include <algorithm>
#include <memory>

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
    ++m_notifying; // observers keep their positions in the list until this function ends
    const auto end = [](KxObservable* self) {
        if (--self->m_notifying == 0) {
            std::erase(self->m_observers, nullptr);
        }
    };
    const std::unique_ptr<KxObservable, decltype(end)> atEnd(this, end);
    const std::size_t count = m_observers.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (m_observers[i] != nullptr) {
            m_observers[i]->onNotification(*this, about);
        }
    }
}
