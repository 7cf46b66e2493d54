#pragma once

#include "util/KxParameters.h"

#include <atomic>
#include <cstdint>

/** A parameter list that an object always has but rarely fills. The list is made when it is first written to or handed
    out. Until then it costs one pointer and reads as empty. Copies are independent, but share the list until one of
    them is written to or hands its list out. Several threads may read, copy and hand out at the same time. */
class KX_UTIL_API KxSharedParameters {
public:
    KxSharedParameters() = default;
    /** Holds the list itself, not a copy: other holders of the list may go on changing it. Nil for none. */
    explicit KxSharedParameters(const KxHandle<KxParameters>& list)
        : m_word(list.isNil() ? 0 : wordOf(KxHandle<KxParameters>(list).detach()) | kLent | kOwn) {}
    KxSharedParameters(const KxSharedParameters& other) : m_word(other.peek() == nullptr ? 0 : other.share()) {}
    KxSharedParameters& operator=(const KxSharedParameters& other) {
        KxSharedParameters copy(other);
        m_word.store(copy.m_word.exchange(m_word.load()));
        return *this;
    }
    ~KxSharedParameters() {
        if (KxParameters* const list = peek()) {
            list->Release(true);
        }
    }

    /** Hands out the list itself, shared with all other callers; never nil. */
    KxHandle<KxParameters> handle() const {
        const std::uintptr_t word = m_word.load(std::memory_order_acquire);
        return KxHandle<KxParameters>((word & kOwn) != 0 ? listOf(word) : &lend());
    }
    /** The list for writing. */
    KxParameters& write() {
        KxParameters* const list = peek();
        return list != nullptr && isOurs(*list) ? *list : makeOurs();
    }

    bool empty() const { return size() == 0; }
    std::size_t size() const {
        const KxParameters* const list = peek();
        return list == nullptr ? 0 : list->size();
    }
    KxString getValue(std::string_view name) const {
        const KxString* const value = findValue(name);
        return value == nullptr ? KxString() : *value;
    }
    /** Null when absent; valid until the list changes. */
    const KxString* findValue(std::string_view name) const {
        const KxParameters* const list = peek();
        return list == nullptr ? nullptr : list->findValue(name);
    }
    bool isPresent(std::string_view name) const { return findValue(name) != nullptr; }
    bool removeValue(std::string_view name) { return isPresent(name) && write().removeValue(name); }
    void clear();
    KxParameters::Iterator begin() const { return peek() == nullptr ? KxParameters::Iterator() : peek()->begin(); }
    KxParameters::Iterator end() const { return peek() == nullptr ? KxParameters::Iterator() : peek()->end(); }
    KxString getString() const { return peek() == nullptr ? KxString("") : peek()->getString(); }
    /** Writes ";" and the pairs, or nothing when there are none. */
    void serializeWithSemicolon(KxOutputStream& out) const {
        if (const KxParameters* const list = peek()) {
            list->serializeEach(out);
        }
    }

private:
    // The word is the list's address. Its lowest bits tell who may hold the list.
    static constexpr std::uintptr_t kLent = 1; ///< The list is handed out, or about to be: no copy may share it.
    static constexpr std::uintptr_t kOwn = 2;  ///< No other object of this class holds the list, or ever will.

    static std::uintptr_t wordOf(const KxParameters* list) { return reinterpret_cast<std::uintptr_t>(list); }
    static KxParameters* listOf(std::uintptr_t word) { return reinterpret_cast<KxParameters*>(word & ~(kLent | kOwn)); }

    KxParameters* peek() const { return listOf(m_word.load(std::memory_order_acquire)); }
    bool isOurs(const KxParameters& list) const {
        return list.isUnshared() || (m_word.load(std::memory_order_relaxed) & kOwn) != 0;
    }
    std::uintptr_t share() const;
    KxParameters& lend() const;
    KxParameters& makeOurs();
    [[gnu::noinline]] KxParameters& copyOurs(const KxParameters& shared);
    void replace(KxParameters* list);

    mutable std::atomic<std::uintptr_t> m_word{0};
};
