#pragma once

#include "util/KxParameters.h"

#include <atomic>

/** A parameter list that an object always has but rarely fills: made when somebody asks for the list itself. Until then
    it costs one pointer and reads as empty. Reading, making on demand included, is safe from several threads. */
class KX_UTIL_API KxLazyParameters {
public:
    KxLazyParameters() = default;
    explicit KxLazyParameters(const KxHandle<KxParameters>& list) : m_list(list.get()) { hold(); }
    /** A deep copy. */
    KxLazyParameters(const KxLazyParameters& other) : m_list(other.empty() ? nullptr : other.peek()->clone()) {
        hold();
    }
    KxLazyParameters& operator=(const KxLazyParameters& other) {
        KxLazyParameters copy(other);
        m_list.store(copy.m_list.exchange(m_list.load()));
        return *this;
    }
    ~KxLazyParameters() {
        if (KxParameters* const list = peek()) {
            list->Release(true);
        }
    }

    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> handle() const { return KxHandle<KxParameters>(&make()); }
    /** The list to change; never shared between two owners of this class. */
    KxParameters& write() { return make(); }

    bool empty() const { return size() == 0; }
    std::size_t size() const {
        const KxParameters* const list = peek();
        return list == nullptr ? 0 : list->size();
    }
    KxString getValue(std::string_view name) const {
        const KxString* const value = findValue(name);
        return value == nullptr ? KxString() : *value;
    }
    /** Null when absent; holds until the list changes. */
    const KxString* findValue(std::string_view name) const {
        const KxParameters* const list = peek();
        return list == nullptr ? nullptr : list->findValue(name);
    }
    bool isPresent(std::string_view name) const { return findValue(name) != nullptr; }
    bool removeValue(std::string_view name) { return peek() != nullptr && peek()->removeValue(name); }
    void clear() {
        if (peek() != nullptr) {
            peek()->clear();
        }
    }
    const KxParameters::Pair* begin() const { return peek() == nullptr ? nullptr : std::as_const(*peek()).begin(); }
    const KxParameters::Pair* end() const { return peek() == nullptr ? nullptr : std::as_const(*peek()).end(); }
    KxString getString() const { return peek() == nullptr ? KxString("") : peek()->getString(); }
    /** Writes the pairs, ";" in front, or nothing when there are none. */
    void serializeBehind(KxOutputStream& out) const;

private:
    KxParameters* peek() const { return m_list.load(std::memory_order_acquire); }
    KxParameters& make() const {
        KxParameters* const list = peek();
        return list != nullptr ? *list : makeNew();
    }
    KxParameters& makeNew() const;
    void hold() {
        if (KxParameters* const list = peek()) {
            list->AddRef();
        }
    }

    mutable std::atomic<KxParameters*> m_list{nullptr};
};
