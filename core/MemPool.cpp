#include "core/MemPool.h"

#include "core/MemAccount.h"
#include "core/MemRows.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>
#include <sys/mman.h>

namespace Oskan {

namespace {

constexpr std::size_t kFirstChunkBytes = 8 * MemClasses::kSlabBytes;
constexpr std::size_t kLastChunkBytes = 32 * MemClasses::kSlabBytes;
static_assert(MemRows::kRows == MemThreadCache::kRows);

/** Whole lists that threads had too much of, by class. A batch's first block holds the next block in its first word
    and the next batch in its second. */
struct alignas(64) Central {
    std::mutex mutex;
    void* batches = nullptr;
};

/** What a thread knows of itself beside its cache. */
struct ThreadState {
    MemThreadCache* own;
    std::uint64_t allocationsToFault; ///< 0: no fault armed.
    bool ended;
};

constinit MemThreadCache s_emptyCache{};  ///< Never written.
constinit MemThreadCache s_orphanCache{}; ///< For threads at their end; under s_orphanMutex.
constinit std::mutex s_orphanMutex;
constinit std::array<Central, MemClasses::kClasses> s_central{};

constinit std::mutex s_cachesMutex;
constinit std::atomic<MemThreadCache*> s_caches{nullptr}; ///< All that were ever made.
constinit MemThreadCache* s_parkedCaches = nullptr;       ///< Under s_cachesMutex.

constinit std::mutex s_chunksMutex;
constinit MemSlabHeader* s_chunks = nullptr; ///< All chunks, so that they stay reachable.
constinit char* s_chunkNext = nullptr;
constinit char* s_chunkEnd = nullptr;
constinit std::size_t s_chunkBytes = kFirstChunkBytes; ///< Of the next one; malloc touches a page for each.

__thread ThreadState t_state __attribute__((tls_model("initial-exec")));

std::size_t bytesOfCell(std::size_t cellOffset) {
    return kMemClasses.blockBytes[cellOffset / MemClasses::kCellBytes];
}

/** How many free blocks of a size a cell holds before it gives half of them away. */
std::uint32_t limitOf(std::size_t bytes) {
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(64 * 1024 / bytes, 16, 256));
}

/** How many blocks of a size are cut at a time; few, so that memory that is not needed is not touched. */
std::size_t cutOf(std::size_t bytes) {
    return std::clamp<std::size_t>(2048 / bytes, 1, 16);
}

void*& nextOf(void* block) {
    return *static_cast<void**>(block);
}
void*& nextBatchOf(void* block) {
    return static_cast<void**>(block)[1];
}

void giveBatch(std::size_t cellOffset, void* batch) noexcept {
    Central& central = s_central[cellOffset / MemClasses::kCellBytes];
    const std::lock_guard lock(central.mutex);
    nextBatchOf(batch) = central.batches;
    central.batches = batch;
}

void* takeBatch(std::size_t cellOffset) noexcept {
    Central& central = s_central[cellOffset / MemClasses::kCellBytes];
    const std::lock_guard lock(central.mutex);
    void* const batch = central.batches;
    if (batch)
        central.batches = nextBatchOf(batch);
    return batch;
}

char* allocateAligned(std::size_t bytes) {
    void* memory = nullptr;
    if (posix_memalign(&memory, MemClasses::kSlabBytes, bytes) != 0)
        throw std::bad_alloc();
    return static_cast<char*>(memory);
}

char* newSlab(std::size_t cellOffset) {
    const std::lock_guard lock(s_chunksMutex);
    if (s_chunkNext == s_chunkEnd) {
        char* const chunk = allocateAligned(s_chunkBytes);
        s_chunks = new (chunk) MemSlabHeader{0, s_chunks, 0};
        s_chunkNext = chunk;
        s_chunkEnd = chunk + s_chunkBytes;
        s_chunkBytes = std::min(2 * s_chunkBytes, kLastChunkBytes);
    }
    char* const slab = s_chunkNext;
    s_chunkNext += MemClasses::kSlabBytes;
    MemSlabHeader* const header = reinterpret_cast<MemSlabHeader*>(slab);
    header->cellOffset = static_cast<std::uint32_t>(cellOffset);
    return slab;
}

/** Fills an empty cell: with a batch that some thread gave away, else with newly cut blocks. */
void refill(MemThreadCache& cache, MemCell& cell, std::size_t cellOffset) {
    const std::size_t bytes = bytesOfCell(cellOffset);
    cell.floor = cell.live.load(std::memory_order_relaxed) - limitOf(bytes);
    cell.head = takeBatch(cellOffset);
    if (cell.head) {
        for (void* block = cell.head; block; block = nextOf(block))
            ++cell.floor;
        return;
    }
    MemThreadCache::Bump& bump = cache.bumps[cellOffset / MemClasses::kCellBytes];
    if (static_cast<std::size_t>(bump.end - bump.next) < bytes) {
        char* const slab = newSlab(cellOffset);
        bump.next = slab + MemClasses::kSlabHeaderBytes;
        bump.end = slab + MemClasses::kSlabBytes;
    }
    const std::size_t count = std::min(cutOf(bytes), static_cast<std::size_t>(bump.end - bump.next) / bytes);
    char* const first = bump.next;
    bump.next += count * bytes;
    for (std::size_t i = 0; i < count; ++i)
        nextOf(first + i * bytes) = i + 1 < count ? first + (i + 1) * bytes : nullptr;
    cell.head = first;
    cell.floor += static_cast<std::uint32_t>(count);
}

void* take(MemThreadCache& cache, std::size_t rowOffset, std::size_t cellOffset) {
    MemCell& cell = cache.cell(rowOffset, cellOffset);
    if (!cell.head)
        refill(cache, cell, cellOffset);
    void* const block = cell.head;
    cell.head = nextOf(block);
    cell.live.store(cell.live.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return block;
}

/** For a cell that is full, or that was never used. */
void makeRoom(MemCell& cell, std::size_t cellOffset) noexcept {
    const std::uint32_t limit = limitOf(bytesOfCell(cellOffset));
    if (!cell.head) {
        cell.floor = cell.live.load(std::memory_order_relaxed) - limit;
        return;
    }
    const std::uint32_t kept = limit / 2;
    void* last = cell.head;
    for (std::uint32_t i = 1; i < kept; ++i)
        last = nextOf(last);
    void* const batch = nextOf(last);
    nextOf(last) = nullptr;
    cell.floor -= limit - kept;
    giveBatch(cellOffset, batch);
}

void give(MemThreadCache& cache, std::size_t rowOffset, std::size_t cellOffset, void* block) noexcept {
    MemCell& cell = cache.cell(rowOffset, cellOffset);
    const std::uint32_t live = cell.live.load(std::memory_order_relaxed);
    if (live == cell.floor)
        makeRoom(cell, cellOffset);
    nextOf(block) = cell.head;
    cell.head = block;
    cell.live.store(live - 1, std::memory_order_relaxed);
}

/** At a thread's end: free blocks go to the others; the counters, and slabs not cut to their end, wait for the next
    thread. */
void park(MemThreadCache& cache) noexcept {
    for (std::size_t row = 1; row < MemRows::sCount(); ++row) {
        for (std::size_t sizeClass = 1; sizeClass < kMemClasses.count; ++sizeClass) {
            MemCell& cell = cache.cells[row][sizeClass];
            if (!cell.head)
                continue;
            giveBatch(sizeClass * MemClasses::kCellBytes, cell.head);
            cell.head = nullptr;
            cell.floor = cell.live.load(std::memory_order_relaxed);
        }
    }
    const std::lock_guard lock(s_cachesMutex);
    cache.nextParked = s_parkedCaches;
    s_parkedCaches = &cache;
}

struct CacheOwner {
    ~CacheOwner() {
        t_memCache = &s_emptyCache;
        t_state.ended = true;
        if (MemThreadCache* const cache = t_state.own) {
            t_state.own = nullptr;
            park(*cache);
        }
    }
    void touch() {}
};
thread_local CacheOwner t_owner;

/** A cache for this thread, or nil when the thread is at its end or there is no memory. */
MemThreadCache* adopt() noexcept {
    if (t_state.ended)
        return nullptr;
    MemThreadCache* cache = nullptr;
    {
        const std::lock_guard lock(s_cachesMutex);
        cache = s_parkedCaches;
        if (cache) {
            s_parkedCaches = cache->nextParked;
        } else {
            // Mapped, so that rows and classes that are not used stay untouched.
            void* const mapped =
                mmap(nullptr, sizeof(MemThreadCache), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (mapped == MAP_FAILED)
                return nullptr;
            cache = static_cast<MemThreadCache*>(mapped);
            cache->nextCache = s_caches.load(std::memory_order_relaxed);
            s_caches.store(cache, std::memory_order_release);
        }
    }
    t_owner.touch();
    t_state.own = cache;
    if (t_state.allocationsToFault == 0)
        t_memCache = cache;
    return cache;
}

MemThreadCache* ownCache() noexcept {
    return t_state.own ? t_state.own : adopt();
}

void* allocateLarge(std::size_t size, std::size_t row) {
    if (size > PTRDIFF_MAX - MemClasses::kSlabBytes)
        throw std::bad_alloc();
    const std::size_t bytes = (size + 15) / 16 * 16;
    char* const memory = allocateAligned(MemClasses::kSlabHeaderBytes + bytes);
    new (memory) MemSlabHeader{0, nullptr, bytes};
    MemRows::sCountBlock(row, 1, static_cast<std::int64_t>(bytes));
    return memory + MemClasses::kSlabHeaderBytes;
}

void deallocateLarge(MemSlabHeader* header, std::size_t row) noexcept {
    MemRows::sCountBlock(row, -1, -static_cast<std::int64_t>(header->largeBytes));
    std::free(header);
}

} // namespace

__thread MemThreadCache* t_memCache __attribute__((tls_model("initial-exec"))) = &s_emptyCache;

void* MemPool::allocateSlow(std::size_t size, MemAccount& account) {
    sFaultPoint();
    const std::size_t row = account.row();
    if (size > MemClasses::kMaxBlock)
        return allocateLarge(size, row);
    const std::size_t rowOffset = row * MemThreadCache::kRowBytes;
    const std::size_t cellOffset = kMemClasses.cellOffset[(size + MemClasses::kGranule - 1) / MemClasses::kGranule];
    if (MemThreadCache* const cache = ownCache())
        return take(*cache, rowOffset, cellOffset);
    const std::lock_guard lock(s_orphanMutex);
    return take(s_orphanCache, rowOffset, cellOffset);
}

void MemPool::deallocateSlow(void* block, MemAccount& account) noexcept {
    const std::size_t row = account.row();
    MemSlabHeader* const slab = slabOf(block);
    if (slab->cellOffset == 0) {
        deallocateLarge(slab, row);
        return;
    }
    const std::size_t rowOffset = row * MemThreadCache::kRowBytes;
    if (MemThreadCache* const cache = ownCache()) {
        give(*cache, rowOffset, slab->cellOffset, block);
        return;
    }
    const std::lock_guard lock(s_orphanMutex);
    give(s_orphanCache, rowOffset, slab->cellOffset, block);
}

void MemPool::sFaultPoint() {
    if (t_state.allocationsToFault != 0 && --t_state.allocationsToFault == 0) {
        MemAllocatorFaults::sDisarm();
        throw std::bad_alloc();
    }
}

MemUsage MemPool::sLive(std::size_t row) noexcept {
    MemUsage usage;
    for (std::size_t sizeClass = 1; sizeClass < kMemClasses.count; ++sizeClass) {
        std::uint32_t live = s_orphanCache.cells[row][sizeClass].live.load(std::memory_order_relaxed);
        for (MemThreadCache* cache = s_caches.load(std::memory_order_acquire); cache; cache = cache->nextCache)
            live += cache->cells[row][sizeClass].live.load(std::memory_order_relaxed);
        // A picture taken while blocks wander between threads may miss one that was just handed out.
        const std::int64_t blocks = static_cast<std::int32_t>(live);
        usage.liveObjects += blocks;
        usage.liveBytes += blocks * kMemClasses.blockBytes[sizeClass];
    }
    return usage;
}

void MemAllocatorFaults::sFailAfter(std::uint64_t n) {
    t_state.allocationsToFault = n;
    t_memCache = n != 0 ? &s_emptyCache : t_state.own ? t_state.own : &s_emptyCache;
}

void MemAllocatorFaults::sDisarm() {
    sFailAfter(0);
}

} // namespace Oskan
