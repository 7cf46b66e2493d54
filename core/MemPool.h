#pragma once

#include "core/CoreApi.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Oskan {

class MemAccount;
struct MemUsage;

/** The block sizes of the pool: steps of 8 bytes up to 256, then of about an eighth, and of about a sixth above 1,024.
    The larger sizes are divisors of a slab, so that less than a fiftieth of a slab is wasted at its end. */
struct MemClasses {
    static constexpr std::size_t kSlabBytes = 32 * 1024; ///< Size and alignment of a slab.
    static constexpr std::size_t kSlabHeaderBytes = 64;
    static constexpr std::size_t kSlabPayload = kSlabBytes - kSlabHeaderBytes;
    static constexpr std::size_t kMaxBlock = kSlabPayload / 2 / 16 * 16; ///< Larger blocks get slabs of their own.
    static constexpr std::size_t kGranule = 8;
    static constexpr std::size_t kMaxStep = 256; ///< Up to here every multiple of a granule is a class.
    static constexpr std::size_t kClasses = 64;  ///< Class 0 is never used.
    static constexpr std::size_t kCellBytes = 16;

    std::array<std::uint16_t, kClasses> blockBytes{};
    std::array<std::uint16_t, kMaxBlock / kGranule + 1> cellOffset{}; ///< By size in granules, rounded up.
    std::size_t count = 1;

    constexpr MemClasses() {
        for (std::size_t bytes = 16; bytes <= kMaxStep; bytes += kGranule) {
            blockBytes[count++] = static_cast<std::uint16_t>(bytes);
        }
        std::size_t last = kMaxStep;
        for (std::size_t pieces = kSlabPayload / last; pieces >= 2; --pieces) {
            const std::size_t bytes = kSlabPayload / pieces / 16 * 16;
            const std::size_t next = pieces == 2 ? 0 : kSlabPayload / (pieces - 1) / 16 * 16;
            // Take the last size before the step would exceed an eighth, or a sixth.
            const std::size_t part = last <= 1024 ? 8 : 6;
            if (bytes > last && (next == 0 || next * part > last * (part + 1))) {
                blockBytes[count++] = static_cast<std::uint16_t>(bytes);
                last = bytes;
            }
        }
        std::size_t sizeClass = 1;
        for (std::size_t i = 0; i < cellOffset.size(); ++i) {
            if (i * kGranule > blockBytes[sizeClass]) {
                ++sizeClass;
            }
            cellOffset[i] = static_cast<std::uint16_t>(sizeClass * kCellBytes);
        }
    }

    /** For a multiple of a granule from 16 to kMaxStep. */
    static constexpr std::size_t cellOffsetOfStep(std::size_t bytes) {
        return bytes * (kCellBytes / kGranule) - kCellBytes;
    }
    constexpr std::size_t bytesOfCell(std::size_t offset) const { return blockBytes[offset / kCellBytes]; }
};

inline constexpr MemClasses kMemClasses;
static_assert(kMemClasses.blockBytes[kMemClasses.count - 1] == MemClasses::kMaxBlock);
static_assert(kMemClasses.bytesOfCell(MemClasses::cellOffsetOfStep(16)) == 16);
static_assert(kMemClasses.bytesOfCell(MemClasses::cellOffsetOfStep(MemClasses::kMaxStep)) == MemClasses::kMaxStep);

/** The free blocks of one size class that one thread holds for one account, and how many blocks it has handed out.
    The cells of row 0, of class 0 and of the empty cache (see t_memCache) are always zero, so that every use of them
    takes the slow path. The first use of an account, a large block and an armed fault are noticed in this way, without
    a test of their own. */
struct MemCell {
    void* head;                      ///< The free blocks; each holds the address of the next.
    std::atomic<std::uint32_t> live; ///< Blocks handed out minus blocks taken back, modulo 2^32; written by its thread.
    std::uint32_t floor;             ///< The value of live at which the list is full.
};
static_assert(sizeof(MemCell) == MemClasses::kCellBytes);

struct MemChunk;

/** At the start of every slab of a class, and of every large block's memory. */
struct MemSlabHeader {
    std::uint32_t cellOffset; ///< Offset of the class's cell in a row; 0 for a large block.
    std::uint32_t held;       ///< Number of blocks that threads or the program hold. From here on, see MemSlabs.
    void* blocks;             ///< The free blocks that no thread holds; each holds the address of the next.
    char* uncut;              ///< Start of the part that is not yet cut into blocks.
    MemSlabHeader* next;
    MemSlabHeader* previous;
    MemChunk* chunk;        ///< Nil for a block that is too large for a chunk.
    std::size_t largeBytes; ///< Size of a large block.
};
static_assert(sizeof(MemSlabHeader) <= MemClasses::kSlabHeaderBytes);

/** The cache of one thread: one row of cells for each account, one cell for each class. */
struct MemThreadCache {
    static constexpr std::size_t kRows = 64;
    static constexpr std::size_t kRowBytes = MemClasses::kClasses * MemClasses::kCellBytes;

    /** How many free blocks a cell may hold. */
    struct Limit {
        std::uint16_t blocks; ///< 0 before the cell's first use.
        bool onlyGave;        ///< The cell gave blocks back and has not run out of blocks since.
    };

    std::array<std::array<MemCell, MemClasses::kClasses>, kRows> cells;
    std::array<std::array<Limit, MemClasses::kClasses>, kRows> limits;
    std::uint32_t turn;         ///< MemSlabs::sTurn() when the cells were last emptied.
    MemThreadCache* nextCache;  ///< In the list of all caches.
    MemThreadCache* nextParked; ///< In the list of caches whose thread has ended.

    MemCell& cell(std::size_t rowOffset, std::size_t cellOffset) {
        char* const at = reinterpret_cast<char*>(this) + rowOffset + cellOffset;
        return *reinterpret_cast<MemCell*>(at);
    }
};

/** Allocates blocks in size classes, with free lists for each thread and counters for each account. Blocks have no
    header: they are cut from aligned slabs, and the slab's header gives the class. The address of a block is a multiple
    of 8, and of 16 when its size is a multiple of 16. Any thread may free a block.

    A thread keeps free blocks in cells, one for each account and class, and takes no lock while the cells have what it
    needs. A cell that runs out takes blocks from the slabs, and may hold twice as many from then on. A cell that is
    full gives blocks back to the slabs; when this happens repeatedly, the cell may hold fewer and fewer. A slab whose
    blocks have all come back serves any class or goes back to the system: see MemSlabs. Whenever a megabyte of slabs
    has come from the system or gone back, each thread empties all its cells before it next asks the slabs for
    something. Blocks of sizes that are no longer used thus do not keep slabs occupied. A thread that does nothing keeps
    its cells.

    After fork the child has the blocks of all threads. The blocks that the program holds count as before. The blocks in
    the cells of other threads are lost to the child.

    This is the implementation. Use MemAccount, NoSizeMemAllocator or DefaultStaticMemAllocator. */
class KX_CORE_API MemPool {
public:
    /** @throws std::bad_alloc when there is no memory. */
    static void* allocate(std::size_t size, MemAccount& account);
    /** @param block from allocate with the same account; nil is allowed. */
    static void deallocate(void* block, MemAccount& account) noexcept;
    /** @param size as it was given to allocate. */
    static void deallocate(void* block, std::size_t size, MemAccount& account) noexcept;
    /** As allocate, but nil if the thread has no free block of this size.
        @param size a multiple of MemClasses::kGranule from 16 to MemClasses::kMaxStep. */
    static void* allocateAtHand(std::size_t size, MemAccount& account) noexcept;
    /** As deallocate, but false, without a change, if the thread may not keep the block.
        @param size as above; it is that of the block. */
    static bool deallocateAtHand(void* block, std::size_t size, MemAccount& account) noexcept;

    /** The live blocks of the row that the threads' caches count; large blocks are not included. */
    static MemUsage sLive(std::size_t row) noexcept;
    /** Throws std::bad_alloc when an armed fault is due; see MemAllocatorFaults. */
    static void sFaultPoint();
    /** Arms a fault for the n-th allocation of this thread from now; 0 for none. */
    static void sFailAfter(std::uint64_t n);

    static MemSlabHeader* slabOf(void* block) {
        return reinterpret_cast<MemSlabHeader*>(reinterpret_cast<std::uintptr_t>(block) &
                                                ~std::uintptr_t{MemClasses::kSlabBytes - 1});
    }

private:
    static void* pop(MemCell& cell) noexcept {
        void* const block = cell.head;
        if (block) [[likely]] {
            cell.head = *static_cast<void**>(block);
            cell.live.store(cell.live.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        }
        return block;
    }
    static bool push(MemCell& cell, void* block) noexcept {
        const std::uint32_t live = cell.live.load(std::memory_order_relaxed);
        if (live == cell.floor) [[unlikely]] {
            return false;
        }
        *static_cast<void**>(block) = cell.head;
        cell.head = block;
        cell.live.store(live - 1, std::memory_order_relaxed);
        return true;
    }

    [[gnu::noinline]] static void* allocateSlow(std::size_t size, MemAccount& account);
    [[gnu::noinline]] static void deallocateSlow(void* block, MemAccount& account) noexcept;
};

/** The calling thread's cache. It is an empty one before the thread's first use, after the thread's end and while a
    fault is armed. */
extern KX_CORE_API __thread MemThreadCache* t_memCache __attribute__((tls_model("initial-exec")));

} // namespace Oskan
