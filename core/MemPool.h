#pragma once

#include "core/CoreApi.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Oskan {

class MemAccount;
struct MemUsage;

/** The block sizes of the pool: steps of 8 bytes up to 256, then steps of about an eighth. The larger sizes are
    divisors of a slab, so that a slab wastes less than a fiftieth at its end. */
struct MemClasses {
    static constexpr std::size_t kSlabBytes = 32 * 1024; ///< Size and alignment of a slab.
    static constexpr std::size_t kSlabHeaderBytes = 64;
    static constexpr std::size_t kSlabPayload = kSlabBytes - kSlabHeaderBytes;
    static constexpr std::size_t kMaxBlock = kSlabPayload / 7 / 16 * 16; ///< Larger blocks are allocated singly.
    static constexpr std::size_t kGranule = 8;
    static constexpr std::size_t kClasses = 64; ///< Class 0 is never used.
    static constexpr std::size_t kCellBytes = 16;

    std::array<std::uint16_t, kClasses> blockBytes{};
    std::array<std::uint16_t, kMaxBlock / kGranule + 1> cellOffset{}; ///< By size in granules, rounded up.
    std::size_t count = 1;

    constexpr MemClasses() {
        for (std::size_t bytes = 16; bytes <= 256; bytes += kGranule)
            blockBytes[count++] = static_cast<std::uint16_t>(bytes);
        std::size_t last = 256;
        for (std::size_t pieces = kSlabPayload / last; pieces >= 7; --pieces) {
            const std::size_t bytes = kSlabPayload / pieces / 16 * 16;
            const std::size_t next = pieces == 7 ? 0 : kSlabPayload / (pieces - 1) / 16 * 16;
            // The last size before a step would grow beyond an eighth.
            if (bytes > last && (next == 0 || next * 8 > last * 9)) {
                blockBytes[count++] = static_cast<std::uint16_t>(bytes);
                last = bytes;
            }
        }
        std::size_t sizeClass = 1;
        for (std::size_t i = 0; i < cellOffset.size(); ++i) {
            if (i * kGranule > blockBytes[sizeClass])
                ++sizeClass;
            cellOffset[i] = static_cast<std::uint16_t>(sizeClass * kCellBytes);
        }
    }
};

inline constexpr MemClasses kMemClasses;
static_assert(kMemClasses.blockBytes[kMemClasses.count - 1] == MemClasses::kMaxBlock);

/** Free blocks of one size class that one thread holds for one account, and how many it has handed out.
    An account of number 0 and a class of number 0 own cells that stay all zero: every use of them takes the slow road,
    which is how a first use, an armed fault and a large block are told without a test of their own. */
struct MemCell {
    void* head;                      ///< Free blocks, each holding the address of the next.
    std::atomic<std::uint32_t> live; ///< Blocks handed out less blocks taken back, modulo 2^32; written by its thread.
    std::uint32_t floor;             ///< The value of live at which the list is full.
};
static_assert(sizeof(MemCell) == MemClasses::kCellBytes);

/** At the start of every slab, and of every slab-aligned large block. */
struct MemSlabHeader {
    std::uint32_t cellOffset; ///< Of the blocks' class; 0 for a large block.
    MemSlabHeader* nextChunk;
    std::size_t largeBytes;
};
static_assert(sizeof(MemSlabHeader) <= MemClasses::kSlabHeaderBytes);

/** What one thread holds. One row of cells an account, one cell a class. */
struct MemThreadCache {
    static constexpr std::size_t kRows = 64;
    static constexpr std::size_t kRowBytes = MemClasses::kClasses * MemClasses::kCellBytes;

    std::array<std::array<MemCell, MemClasses::kClasses>, kRows> cells;
    struct Bump {
        char* next;
        char* end;
    };
    std::array<Bump, MemClasses::kClasses> bumps; ///< The uncut rest of a slab, by class.
    MemThreadCache* nextCache;                    ///< In the list of all.
    MemThreadCache* nextParked;                   ///< In the list of those whose thread has ended.

    MemCell& cell(std::size_t rowOffset, std::size_t cellOffset) {
        char* const at = reinterpret_cast<char*>(this) + rowOffset + cellOffset;
        return *reinterpret_cast<MemCell*>(at);
    }
};

/** Size-classed blocks with free lists a thread, counted an account. Blocks have no header: they are cut from aligned
    slabs, whose header tells the class. A block's address is a multiple of 8, and of 16 when its size is one.
    A block may be given back by any thread. Memory once cut into slabs is kept for reuse until the process ends.

    This is the engine; users go through MemAccount, NoSizeMemAllocator or DefaultStaticMemAllocator. */
class KX_CORE_API MemPool {
public:
    /** @throws std::bad_alloc when there is no memory. */
    static void* allocate(std::size_t size, MemAccount& account);
    /** @param block from allocate with the same account; nil is allowed. */
    static void deallocate(void* block, MemAccount& account) noexcept;
    /** @param size as it was given to allocate. */
    static void deallocate(void* block, std::size_t size, MemAccount& account) noexcept;

    /** Blocks of the row that threads hold, large ones left out. */
    static MemUsage sLive(std::size_t row) noexcept;
    /** Throws std::bad_alloc when an armed fault is due; see MemAllocatorFaults. */
    static void sFaultPoint();

    static MemSlabHeader* slabOf(void* block) {
        return reinterpret_cast<MemSlabHeader*>(reinterpret_cast<std::uintptr_t>(block) &
                                                ~std::uintptr_t{MemClasses::kSlabBytes - 1});
    }

private:
    static bool push(MemCell& cell, void* block) noexcept {
        const std::uint32_t live = cell.live.load(std::memory_order_relaxed);
        if (live == cell.floor) [[unlikely]]
            return false;
        *static_cast<void**>(block) = cell.head;
        cell.head = block;
        cell.live.store(live - 1, std::memory_order_relaxed);
        return true;
    }

    [[gnu::noinline]] static void* allocateSlow(std::size_t size, MemAccount& account);
    [[gnu::noinline]] static void deallocateSlow(void* block, MemAccount& account) noexcept;
};

/** The calling thread's cache; an empty one before its first use, after its end and while a fault is armed. */
extern KX_CORE_API __thread MemThreadCache* t_memCache __attribute__((tls_model("initial-exec")));

} // namespace Oskan
