#pragma once

#include "core/Assertion.h"
#include "util/KxHandleBase.h"

#include <cstddef>
#include <type_traits>
#include <utility>

template <class T>
class KxHandle;

/** The base of KxHandle<T>: KxHandleBase, or, for a class that names a `HandleParent` (exceptions do), the parent's
    handle, so that a handler for a handle of the parent catches a handle of the child. */
template <class T, class = void>
struct KxHandleParent {
    using type = KxHandleBase;
};
template <class T>
struct KxHandleParent<T, std::void_t<typename T::HandleParent>> {
    using type = KxHandle<typename T::HandleParent>;
};

/** A counted reference to a KxObject of class T, or nil. Copying adds a reference, moving does not. When the last
    handle is destroyed, the object is freed. Dereferencing nil is an assertion failure ("pObj!=0", followed by the
    class T and the place of the call). Different handles to one object may be used on different threads; one handle is
    to be used by one thread at a time. */
template <class T>
class __attribute__((visibility("default"))) KxHandle : public KxHandleParent<T>::type {
    using Parent = typename KxHandleParent<T>::type;
    static constexpr bool kIsRoot = std::is_same_v<Parent, KxHandleBase>;

public:
    constexpr KxHandle() = default;
    constexpr KxHandle(std::nullptr_t) {}
    /** Takes over a reference that is already counted, or one to a constant, which is never counted. */
    constexpr KxHandle(T* object, KxUncounted uncounted) : Parent(object, uncounted) {}
    /** Shares the object, or adopts it if it is new and not yet counted; nil for null. */
    explicit KxHandle(T* object) : Parent() { adopt(object); }
    /** The first handle of a new object; nil for null. */
    [[nodiscard]] static KxHandle sOfNew(T* object) {
        if (object != nullptr) {
            KxHandleBase::countFirst(*object);
        }
        return KxHandle(object, KxUncounted{});
    }
    [[nodiscard]] static KxHandle sOfNew(T& object) {
        KxHandleBase::countFirst(object);
        return KxHandle(&object, KxUncounted{});
    }
    /** A handle to the object; `companion` is kept alive at least as long as the object. */
    KxHandle(T* object, KxObject* companion) : KxHandle(object) { this->keepBeside(object, companion); }

    KxHandle(const KxHandle& other) : Parent() { adopt(other.pointer()); }
    KxHandle(KxHandle&& other) noexcept : Parent() { this->m_object = std::exchange(other.m_object, nullptr); }
    template <class U>
    requires(std::is_base_of_v<T, U> && !std::is_same_v<T, U>) KxHandle(const KxHandle<U>& other) : Parent() {
        adopt(other.get());
    }
    template <class U>
    requires(std::is_base_of_v<T, U> && !std::is_same_v<T, U>) KxHandle(KxHandle<U>&& other)
    noexcept : Parent() { this->m_object = other.detach(); }
    ~KxHandle() {
        if constexpr (kIsRoot) {
            drop(pointer());
        }
    }

    KxHandle& operator=(const KxHandle& other) {
        if (this->m_object != other.m_object) {
            KxHandle copy(other);
            swap(copy);
        }
        return *this;
    }
    KxHandle& operator=(KxHandle&& other) noexcept {
        T* const taken = other.detach(); // before the old object is read: the two handles may be one
        T* const old = pointer();
        this->m_object = taken;
        drop(old);
        return *this;
    }
    KxHandle& operator=(std::nullptr_t) {
        drop(detach());
        return *this;
    }

    T* operator->() const { return checked(); }
    T& operator*() const { return *checked(); }
    /** The object or null; no reference is added. */
    T* get() const { return pointer(); }
    /** Returns the object and leaves the handle nil. The reference is not dropped; the caller owns it now. */
    T* detach() {
        T* object = pointer();
        this->m_object = nullptr;
        return object;
    }
    void swap(KxHandle& other) noexcept { std::swap(this->m_object, other.m_object); }

private:
    T* pointer() const { return static_cast<T*>(this->m_object); }
    T* checked() const {
        if (this->m_object == nullptr) [[unlikely]] {
            failNil();
        }
        return pointer();
    }
    /** Not inlined and without arguments, so that the check adds only one call to the code of its callers. */
    [[noreturn, gnu::cold, gnu::noinline]] static void failNil() noexcept {
        Oskan::Assertion::sFailNil("pObj!=0", __PRETTY_FUNCTION__, __builtin_return_address(0));
    }
    void adopt(T* object) {
        this->m_object = object;
        if (object != nullptr) {
            object->AddRef();
        }
    }
    static void drop(T* object) {
        if (object != nullptr) {
            object->Release(true);
        }
    }
};

/** Makes a new object in a handle. */
template <class T, class... Args>
KxHandle<T> KxMake(Args&&... args) {
    return KxHandle<T>::sOfNew(new T(std::forward<Args>(args)...));
}

/** A deep copy of the object, in a handle of the same type; nil for nil. */
template <class T>
[[nodiscard]] KxHandle<T> KxCopy(const KxHandle<T>& handle) {
    return handle.isNil() ? KxHandle<T>() : KxHandle<T>(static_cast<T*>(handle->clone()));
}

/** The object as a U, or nil if it is not a U. */
template <class U, class T>
[[nodiscard]] KxHandle<U> KxHandleCast(const KxHandle<T>& handle) {
    return KxHandle<U>(dynamic_cast<U*>(handle.get()));
}
