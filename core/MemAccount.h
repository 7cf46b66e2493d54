#pragma once

#include "core/CoreApi.h"
#include "core/MemPool.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Oskan {

/** A name under which memory is counted. It has static storage duration and costs nothing when a program is loaded:

        constinit MemAccount s_account{"KxSipHeader"};

    Objects with the same name are one account. Usable from any thread, from static initialisers to static
    destructors. */
class KX_CORE_API MemAccount {
public:
    /** @param name a literal, or text that lives as long as the process. */
    constexpr explicit MemAccount(const char* name) noexcept : m_name(name) {}
    MemAccount(const MemAccount&) = delete;
    MemAccount& operator=(const MemAccount&) = delete;

    const char* getName() const noexcept { return m_name; }

    /** @return at least size bytes, aligned to 8, and to 16 when size is a multiple of 16. Never nil.
        @throws std::bad_alloc when there is no memory. */
    void* allocate(std::size_t size) {
#ifdef KX_PLAIN_MALLOC
        return allocatePlain(size);
#else
        return MemPool::allocate(size, *this);
#endif
    }

    /** @param block from allocate of this account, in any thread; nil is allowed. */
    void deallocate(void* block) noexcept {
#ifdef KX_PLAIN_MALLOC
        deallocatePlain(block);
#else
        MemPool::deallocate(block, *this);
#endif
    }

    /** @param size as it was given to allocate; the block's slab need not be read then. */
    void deallocate(void* block, [[maybe_unused]] std::size_t size) noexcept {
#ifdef KX_PLAIN_MALLOC
        deallocatePlain(block);
#else
        MemPool::deallocate(block, size, *this);
#endif
    }

    /** As allocate, but nil if there is no free block at hand; then call allocate. For code that has a longer road for
        that case anyway, and so needs no registers saved in this one.
        @param size a multiple of 8 from 16 to 256. */
    void* allocateAtHand([[maybe_unused]] std::size_t size) noexcept {
#ifdef KX_PLAIN_MALLOC
        return nullptr;
#else
        return MemPool::allocateAtHand(size, *this);
#endif
    }

    /** As deallocate, but false, without a change, if that takes more than a few steps; then call deallocate.
        @param size a multiple of 8 from 16 to 256: that of the block. */
    bool deallocateAtHand([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) noexcept {
#ifdef KX_PLAIN_MALLOC
        return false;
#else
        return MemPool::deallocateAtHand(block, size, *this);
#endif
    }

private:
    friend class MemPool;

    std::size_t row() noexcept;
#ifdef KX_PLAIN_MALLOC
    void* allocatePlain(std::size_t size);
    void deallocatePlain(void* block) noexcept;
#endif

    const char* m_name;
    std::atomic<std::uint32_t> m_rowOffset{0}; ///< Offset of the account's row in a thread's cache; 0 before first use.
};

inline void* MemPool::allocate(std::size_t size, MemAccount& account) {
    if (size <= MemClasses::kMaxBlock) [[likely]] {
        const std::size_t cellOffset = kMemClasses.cellOffset[(size + MemClasses::kGranule - 1) / MemClasses::kGranule];
        MemCell& cell = t_memCache->cell(account.m_rowOffset.load(std::memory_order_relaxed), cellOffset);
        if (void* const block = pop(cell)) [[likely]] {
            return block;
        }
    }
    return allocateSlow(size, account);
}

inline void* MemPool::allocateAtHand(std::size_t size, MemAccount& account) noexcept {
    const std::size_t rowOffset = account.m_rowOffset.load(std::memory_order_relaxed);
    return pop(t_memCache->cell(rowOffset, MemClasses::cellOffsetOfStep(size)));
}

inline bool MemPool::deallocateAtHand(void* block, std::size_t size, MemAccount& account) noexcept {
    const std::size_t rowOffset = account.m_rowOffset.load(std::memory_order_relaxed);
    return push(t_memCache->cell(rowOffset, MemClasses::cellOffsetOfStep(size)), block);
}

inline void MemPool::deallocate(void* block, MemAccount& account) noexcept {
    if (!block) {
        return;
    }
    const std::size_t rowOffset = account.m_rowOffset.load(std::memory_order_relaxed);
    if (!push(t_memCache->cell(rowOffset, slabOf(block)->cellOffset), block)) [[unlikely]] {
        deallocateSlow(block, account);
    }
}

inline void MemPool::deallocate(void* block, std::size_t size, MemAccount& account) noexcept {
    if (!block) {
        return;
    }
    const std::size_t rowOffset = account.m_rowOffset.load(std::memory_order_relaxed);
    const std::size_t cellOffset =
        size > MemClasses::kMaxBlock ? 0
                                     : kMemClasses.cellOffset[(size + MemClasses::kGranule - 1) / MemClasses::kGranule];
    if (!push(t_memCache->cell(rowOffset, cellOffset), block)) [[unlikely]] {
        deallocateSlow(block, account);
    }
}

} // namespace Oskan

/** Gives a class the operator new and delete (and their placement forms) of an account, and getMemAccountName.
    Belongs in a public section. A base class through which objects are deleted must have a virtual destructor.
    @param account an Oskan::MemAccount of static storage duration. */
#define KX_MEM_ACCOUNT_OPERATORS(account)                                 \
    static void* operator new(std::size_t size) {                         \
        return (account).allocate(size);                                  \
    }                                                                     \
    static void* operator new(std::size_t, void* place) noexcept {        \
        return place;                                                     \
    }                                                                     \
    static void operator delete(void* block, std::size_t size) noexcept { \
        (account).deallocate(block, size);                                \
    }                                                                     \
    static void operator delete(void*, void*) noexcept {}                 \
    static const char* getMemAccountName() noexcept {                     \
        return (account).getName();                                       \
    }                                                                     \
    static_assert(true)
