#include "util/KxSharedParameters.h"

#include "core/ForkLock.h"

#include <array>
#include <mutex>

namespace {

/** Guard the handing out of lists. */
struct Mutexes {
    void lock() {
        for (std::mutex& each : all) {
            each.lock();
        }
    }
    void unlock() {
        for (std::mutex& each : all) {
            each.unlock();
        }
    }
    std::array<std::mutex, 16> all;
};
constinit Mutexes s_mutexes;
const Oskan::ForkLockOf<s_mutexes> s_forkLock{Oskan::ForkLock::Order::Lists};

/** The mutex for this object's list. Few objects share a mutex. */
std::mutex& mutexOf(const KxSharedParameters& parameters) {
    return s_mutexes.all[reinterpret_cast<std::uintptr_t>(&parameters) / 64 % s_mutexes.all.size()];
}

// These two are apart, so that sharing needs no saved registers.

/** A copy with one reference. */
[[gnu::noinline]] KxParameters* copyOf(const KxParameters& list) {
    return KxHandle<KxParameters>(list.clone()).detach();
}

/** As copyOf; drops a reference to the list. */
[[gnu::noinline]] KxParameters* copyAndRelease(KxParameters* list) {
    const KxHandle<KxParameters> held(list, KxUncounted{});
    return copyOf(*list);
}

} // namespace

/** Returns the word for a copy. Another thread may be about to hand the list out. That thread marks the word and then
    reads the count; this one increments the count and then reads the word. So at least one notices the other. */
std::uintptr_t KxSharedParameters::share() const {
    const std::uintptr_t word = m_word.load(std::memory_order_acquire);
    KxParameters* const list = listOf(word);
    if (list == nullptr || list->empty()) {
        return 0;
    }
    if ((word & kLent) == 0) {
        list->AddRef();
        if (m_word.fetch_add(0, std::memory_order_acq_rel) == word) {
            return word;
        }
        return wordOf(copyAndRelease(list));
    }
    return wordOf(copyOf(*list));
}

/** Makes a list of this object's own, and marks it as handed out. It is a new list if there was none, and a copy if the
    list is shared. */
KxParameters& KxSharedParameters::lend() const {
    const std::lock_guard<std::mutex> lock(mutexOf(*this));
    const std::uintptr_t word = m_word.load(std::memory_order_acquire);
    KxParameters* const list = listOf(word);
    KxHandle<KxParameters> own;
    if (list == nullptr) {
        own = KxMake<KxParameters>();
    } else if ((word & kOwn) != 0) { // another reader was faster
        return *list;
    } else {
        m_word.fetch_or(kLent, std::memory_order_acq_rel);
        if (list->isUnshared()) {
            own = KxHandle<KxParameters>(list, KxUncounted{});
        } else { // other threads may be reading the old list through this object, so it has to stay
            own = KxHandle<KxParameters>(list->clone(), list);
            list->Release(true);
        }
    }
    m_word.store(wordOf(own.get()) | kLent | kOwn, std::memory_order_release);
    return *own.detach();
}

KxParameters& KxSharedParameters::makeOurs() {
    if (const KxParameters* const shared = peek()) {
        return copyOurs(*shared);
    }
    KxParameters* const list = KxParameters::sCreateHeld();
    m_word.store(wordOf(list), std::memory_order_release);
    return *list;
}

KxParameters& KxSharedParameters::copyOurs(const KxParameters& shared) {
    KxHandle<KxParameters> own(shared.clone());
    KxParameters& list = *own;
    replace(own.detach());
    return list;
}

void KxSharedParameters::clear() {
    KxParameters* const list = peek();
    if (list != nullptr && isOurs(*list)) {
        list->clear();
    } else {
        replace(nullptr);
    }
}

void KxSharedParameters::replace(KxParameters* list) {
    KxParameters* const old = peek();
    m_word.store(wordOf(list), std::memory_order_release);
    if (old != nullptr) {
        old->Release(true);
    }
}
