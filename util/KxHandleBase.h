#pragma once

#include "util/KxObject.h"

#include <cstddef>

/** Tells a handle to count no reference: the object is an immortal constant, or the reference is already counted. */
struct KxUncounted {};

/** The common base of all handles: one pointer, which is nil or holds a reference. */
class KX_UTIL_API KxHandleBase {
public:
    [[nodiscard]] bool isNil() const { return m_object == nullptr; }
    explicit operator bool() const { return m_object != nullptr; }

    friend bool operator==(const KxHandleBase& a, const KxHandleBase& b) { return a.m_object == b.m_object; }
    friend bool operator==(const KxHandleBase& a, std::nullptr_t) { return a.m_object == nullptr; }

protected:
    constexpr KxHandleBase() : m_object(nullptr) {}
    constexpr KxHandleBase(KxObject* object, KxUncounted) : m_object(object) {}

    /** Adds the first reference to a new object, without a virtual call. */
    static void countFirst(KxObject& object) {
        if (object.m_count.load(std::memory_order_relaxed) == 0) {
            object.m_count.store(1, std::memory_order_relaxed);
        } else {
            object.AddRef();
        }
    }

    /** Ties `companion` to `object`: it is released when the object is destroyed. */
    static void keepBeside(KxObject* object, KxObject* companion) {
        if (object != nullptr && companion != nullptr && !object->isImmortal()) {
            object->keepCompanion(companion);
        }
    }

    KxObject* m_object;
};
