#pragma once

#include "util/UtilApi.h"

#include <atomic>
#include <cstdint>

class KxOutputStream;

/** Base of every shared object: headers, messages, URIs, parameter lists, exceptions, byte arrays, string buffers.

    Carries an intrusive reference count and is held through KxHandle. A new object has the count 0 and belongs to
    whoever made it; the first handle adopts it. Counting is atomic, so handles to one object may be copied and
    dropped on several threads; the object itself is only as thread-safe as its class says. */
class KX_UTIL_API KxObject {
public:
    virtual ~KxObject() {
        if ((m_count.load(std::memory_order_relaxed) & kHasCompanion) != 0) [[unlikely]] {
            releaseCompanions();
        }
    }

    /** A new deep copy with the count 0, owned by the caller. */
    virtual KxObject* clone() const = 0;

    /** Negative, zero or positive as this object sorts before, with or behind the other; by address unless a class
        says otherwise. */
    virtual int compareWith(const KxObject& other) const;

    /** A hash that agrees with compareWith. */
    virtual std::uint32_t hashCode() const;

    /** Writes a readable form, for people; with `verbose` as much as there is. */
    virtual void display(KxOutputStream& out, bool verbose) const;

    /** Adds a reference and returns the new count. */
    virtual std::uint32_t AddRef() {
        const std::uint32_t count = m_count.load(std::memory_order_relaxed);
        if (static_cast<std::int32_t>(count) > 0) {
            return (m_count.fetch_add(1, std::memory_order_relaxed) + 1) & kCountMask;
        }
        if (count == 0) { // fresh: nobody else can see it yet
            m_count.store(1, std::memory_order_relaxed);
        }
        return count + 1;
    }

    /** Drops a reference and returns the new count. The object is destroyed when the last one goes, unless
        `destroy` is false: then it is fresh again and belongs to the caller. */
    virtual std::uint32_t Release(bool destroy) {
        const std::uint32_t count = m_count.load(std::memory_order_acquire);
        if (count == 1 && destroy) { // the last owner: no other thread can be counting
            delete this;
            return 0;
        }
        return isConstant(count) ? count : releaseShared(destroy);
    }

    /** True while exactly one handle holds the object, so that its holder may change it unseen. */
    bool isUnshared() const { return (m_count.load(std::memory_order_acquire) & ~kHasCompanion) == 1; }

protected:
    /** Constants that live as long as the process are never counted. */
    enum class Immortal { Tag };

    /** An object that is made for a handle which takes its first reference over. */
    enum class Held { Tag };

    constexpr KxObject() : m_count(0) {}
    explicit KxObject(Held) : m_count(1) {}
    explicit constexpr KxObject(Immortal) : m_count(kImmortal) {}
    constexpr KxObject(const KxObject&) : m_count(0) {}
    KxObject& operator=(const KxObject&) { return *this; }

    bool isImmortal() const { return isConstant(m_count.load(std::memory_order_relaxed)); }
    static bool isConstant(std::uint32_t count) { return (count & kImmortal) != 0; }
    std::uint32_t count() const { return m_count.load(std::memory_order_acquire); }
    /** Release, where the object is known to be neither a constant nor held by one handle only. */
    std::uint32_t releaseShared(bool destroy);

private:
    friend class KxHandleBase;

    static constexpr std::uint32_t kImmortal = 0x80000000U;
    static constexpr std::uint32_t kHasCompanion = 0x40000000U;
    static constexpr std::uint32_t kCountMask = kHasCompanion - 1;

    void releaseCompanions();
    void keepCompanion(KxObject* companion);

    std::atomic<std::uint32_t> m_count;
};
