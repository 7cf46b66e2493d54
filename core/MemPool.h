#pragma once

#include "core/CoreApi.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Oskan {

class MemAccount;
struct MemUsage;

/** The block sizes of the pool: steps of 8 bytes up to 256, then steps of about an eighth, and of a sixth beyond 1,024.
    The larger sizes are divisors of a slab, so that a slab wastes less than a fiftieth at its end. */
struct MemClasses {
    static constexpr std::size_t kSlabBytes = 32 * 1024; ///< Size and alignment of a slab.
    static constexpr std::size_t kSlabHeaderBytes = 64;
    static constexpr std::size_t kSlabPayload = kSlabBytes - kSlabHeaderBytes;
    static constexpr std::size_t kMaxBlock = kSlabPayload / 2 / 16 * 16; ///< Larger blocks get slabs of their own.
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
        for (std::size_t pieces = kSlabPayload / last; pieces >= 2; --pieces) {
            const std::size_t bytes = kSlabPayload / pieces / 16 * 16;
            const std::size_t next = pieces == 2 ? 0 : kSlabPayload / (pieces - 1) / 16 * 16;
            // The last size before a step would grow beyond an eighth, or a sixth.
            const std::size_t part = last <= 1024 ? 8 : 6;
            if (bytes > last && (next == 0 || next * part > last * (part + 1))) {
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

    constexpr std::size_t bytesOfCell(std::size_t offset) const { return blockBytes[offset / kCellBytes]; }
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

struct MemChunk;

/** At the start of every slab of a class, and of every large block's memory. */
struct MemSlabHeader {
    std::uint32_t cellOffset; ///< Of the blocks' class; 0 for a large block.
    std::uint32_t held;       ///< Blocks that threads or the program hold. This and what follows: see MemSlabs.
    void* blocks;             ///< The free ones that no thread holds, each holding the address of the next.
    char* uncut;              ///< Where no block was cut yet.
    MemSlabHeader* next;
    MemSlabHeader* previous;
    MemChunk* chunk;        ///< Nil for a block that is too large for a chunk.
    std::size_t largeBytes; ///< Of a large block.
};
static_assert(sizeof(MemSlabHeader) <= MemClasses::kSlabHeaderBytes);

/** What one thread holds. One row of cells an account, one cell a class. */
struct MemThreadCache {
    static constexpr std::size_t kRows = 64;
    static constexpr std::size_t kRowBytes = MemClasses::kClasses * MemClasses::kCellBytes;

    /** How many free blocks a cell may hold. */
    struct Limit {
        std::uint16_t blocks; ///< 0 before the cell's first use.
        bool onlyGave;        ///< The cell gave blocks away and has not run out of them since.
    };

    std::array<std::array<MemCell, MemClasses::kClasses>, kRows> cells;
    std::array<std::array<Limit, MemClasses::kClasses>, kRows> limits;
    std::uint32_t turn;         ///< Of the slabs, when the cells were emptied last.
    MemThreadCache* nextCache;  ///< In the list of all.
    MemThreadCache* nextParked; ///< In the list of those whose thread has ended.

    MemCell& cell(std::size_t rowOffset, std::size_t cellOffset) {
        char* const at = reinterpret_cast<char*>(this) + rowOffset + cellOffset;
        return *reinterpret_cast<MemCell*>(at);
    }
};

/** Size-classed blocks with free lists a thread, counted an account. Blocks have no header: they are cut from aligned
    slabs, whose header tells the class. A block's address is a multiple of 8, and of 16 when its size is one.
    A block may be given back by any thread.

    A thread keeps free blocks in cells, one for each account and class, and uses no lock while these have what it
    needs. A cell that runs out takes blocks from the slabs, and may hold twice as many from then on; one that is full
    gives blocks back to them, and when that happens again and again, may hold ever fewer. Slabs whose blocks have all
    come back serve any class or go back to the system: see MemSlabs. Whenever a megabyte has gone either way, a thread
    that asks the slabs for something first empties all its cells, so that blocks of sizes that are out of use do not
    keep slabs. A thread that does nothing keeps its cells.

    After fork the child has the blocks of all threads: those that the program holds count as before, and those in the
    cells of other threads are lost to it.

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
