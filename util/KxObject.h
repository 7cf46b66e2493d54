#pragma once

#include "util/UtilApi.h"

#include <atomic>
#include <cstdint>

class KxOutputStream;

/** Base of every shared object: headers, messages, URIs, parameter lists, exceptions, byte arrays, string buffers.

    It has an intrusive reference count and is held through KxHandle. A new object has the count 0 and belongs to its
    creator; the first handle adopts it. Counting is atomic, so handles to one object may be copied and dropped on
    several threads; the object itself is only as thread-safe as its class says. */
class KX_UTIL_API KxObject {
public:
    virtual ~KxObject() {
        if ((m_count.load(std::memory_order_relaxed) & kHasCompanion) != 0) [[unlikely]] {
            releaseCompanions();
        }
    }

    /** A new deep copy with the count 0, owned by the caller. */
    [[nodiscard]] virtual KxObject* clone() const = 0;

    /** Returns a negative number, zero or a positive number when this object sorts before, equal to or after the other.
        Compares addresses unless a class says otherwise. */
    [[nodiscard]] virtual int compareWith(const KxObject& other) const;

    /** A hash that agrees with compareWith. */
    [[nodiscard]] virtual std::uint32_t hashCode() const;

    /** Writes a form that people can read; with `verbose`, all there is to show. */
    virtual void display(KxOutputStream& out, bool verbose) const;

    /** Adds a reference and returns the new count. */
    virtual std::uint32_t AddRef() {
        const std::uint32_t count = m_count.load(std::memory_order_relaxed);
        if (static_cast<std::int32_t>(count) > 0) {
            return (m_count.fetch_add(1, std::memory_order_relaxed) + 1) & kCountMask;
        }
        if (count == 0) { // new: no other thread can refer to it yet
            m_count.store(1, std::memory_order_relaxed);
        }
        return count + 1;
    }

    /** Drops a reference and returns the new count. If it was the last reference, the object is destroyed, unless
        `destroy` is false: then it is as new and belongs to the caller. */
    virtual std::uint32_t Release(bool destroy) {
        const std::uint32_t count = m_count.load(std::memory_order_acquire);
        if (count == 1 && destroy) { // the last owner: no other thread can change the count
            delete this;
            return 0;
        }
        return isConstant(count) ? count : releaseShared(destroy);
    }

    /** Whether exactly one handle holds the object, so that its owner may change it without affecting others. */
    bool isUnshared() const { return (m_count.load(std::memory_order_acquire) & ~kHasCompanion) == 1; }

protected:
    /** Marks a constant that lives as long as the process and is never counted. */
    enum class Immortal { Tag };

    /** Marks an object that is made with its first reference, which a handle takes over. */
    enum class Held { Tag };

    constexpr KxObject() : m_count(0) {}
    explicit KxObject(Held) : m_count(1) {}
    explicit constexpr KxObject(Immortal) : m_count(kImmortal) {}
    constexpr KxObject(const KxObject&) : m_count(0) {}
    KxObject& operator=(const KxObject&) { return *this; }

    bool isImmortal() const { return isConstant(m_count.load(std::memory_order_relaxed)); }
    static bool isConstant(std::uint32_t count) { return (count & kImmortal) != 0; }
    std::uint32_t count() const { return m_count.load(std::memory_order_acquire); }
    /** The rest of Release, for an object that is not a constant. Release itself handles the last reference when
        `destroy` is true. */
    std::uint32_t releaseShared(bool destroy) {
        const std::uint32_t left = (m_count.fetch_sub(1, std::memory_order_acq_rel) - 1) & kCountMask;
        if (left == 0 && destroy) [[unlikely]] {
            destroyShared();
        }
        return left;
    }

private:
    friend class KxHandleBase;

    static constexpr std::uint32_t kImmortal = 0x80000000U;
    static constexpr std::uint32_t kHasCompanion = 0x40000000U;
    static constexpr std::uint32_t kCountMask = kHasCompanion - 1;

    [[gnu::cold]] void destroyShared();
    void releaseCompanions();
    void keepCompanion(KxObject* companion);

    std::atomic<std::uint32_t> m_count;
};
