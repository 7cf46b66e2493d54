#include "core/MemPool.h"

#include "core/ForkLock.h"
#include "core/MemAccount.h"
#include "core/MemAccounts.h"
#include "core/MemRows.h"
#include "core/MemSlabs.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace Oskan {

namespace {

static_assert(MemRows::kRows == MemThreadCache::kRows);

/** The state of a thread that is not in its cache. */
struct ThreadState {
    MemThreadCache* own;
    std::uint64_t allocationsToFault; ///< 0: no fault armed.
    bool ended;
};

constinit MemThreadCache s_emptyCache{};  ///< Never written.
constinit MemThreadCache s_orphanCache{}; ///< For threads without a cache (see adopt); guarded by s_orphanMutex.
constinit std::mutex s_orphanMutex;

constinit std::mutex s_cachesMutex;
constinit std::atomic<MemThreadCache*> s_caches{nullptr}; ///< All caches that were ever made.
constinit MemThreadCache* s_parkedCaches = nullptr;       ///< Guarded by s_cachesMutex.

#ifndef KX_PLAIN_MALLOC // Else the pool is not used, and the thread sanitizer does not like so many locks at once.
/** All mutexes of the pool, in the order in which they are taken. */
struct PoolMutexes {
    void lock() {
        s_orphanMutex.lock();
        s_cachesMutex.lock();
        MemSlabs::sLock();
    }
    void unlock() {
        MemSlabs::sUnlock();
        s_cachesMutex.unlock();
        s_orphanMutex.unlock();
    }
};
constinit PoolMutexes s_poolMutexes;
const ForkLockOf<s_poolMutexes> s_forkLock{ForkLock::Order::Pool};
#endif

__thread ThreadState t_state __attribute__((tls_model("initial-exec")));

/** The highest limit of a cell: how many free blocks of that size it may hold at most. */
std::uint32_t mostOf(std::size_t bytes) {
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(64 * 1024 / bytes, 4, 256));
}

/** The lowest limit of a cell: it applies at first, and after the cell did nothing but give blocks back. */
std::uint32_t leastOf(std::size_t bytes) {
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(4 * 1024 / bytes, 2, 32));
}

/** One cell of a cache with its limit, as the slow path uses it. The number of free blocks in the cell is
    limit - (live - floor). */
class SlowCell {
public:
    SlowCell(MemThreadCache& cache, std::size_t row, std::size_t cellOffset)
        : m_cell(cache.cells[row][cellOffset / MemClasses::kCellBytes]),
          m_limit(cache.limits[row][cellOffset / MemClasses::kCellBytes]),
          m_cellOffset(cellOffset) {}

    void* take() {
        if (!m_cell.head) {
            refill();
        }
        void* const block = m_cell.head;
        m_cell.head = MemSlabs::nextOf(block);
        m_cell.live.store(live() + 1, std::memory_order_relaxed);
        return block;
    }

    void give(void* block) noexcept {
        if (live() == m_cell.floor) {
            makeRoom();
        }
        MemSlabs::nextOf(block) = m_cell.head;
        m_cell.head = block;
        m_cell.live.store(live() - 1, std::memory_order_relaxed);
    }

    /** Gives all free blocks back to the slabs. */
    void empty() noexcept {
        if (m_cell.head) {
            MemSlabs::sGive(m_cellOffset, std::exchange(m_cell.head, nullptr));
        }
        m_limit = {};
        m_cell.floor = live();
    }

private:
    std::uint32_t live() const { return m_cell.live.load(std::memory_order_relaxed); }
    std::size_t bytes() const { return kMemClasses.bytesOfCell(m_cellOffset); }

    void setLimit(std::uint32_t blocks, bool onlyGave, std::uint32_t free) {
        m_limit = {static_cast<std::uint16_t>(blocks), onlyGave};
        m_cell.floor = live() - (blocks - free);
    }

    void refill() {
        const std::uint32_t limit = std::clamp(2U * m_limit.blocks, leastOf(bytes()), mostOf(bytes()));
        const MemSlabs::Blocks taken = MemSlabs::sTake(m_cellOffset, limit / 2);
        m_cell.head = taken.head;
        setLimit(limit, false, taken.count);
    }

    /** Called for a cell that is full or that was never used. */
    void makeRoom() noexcept {
        const std::uint32_t limit = m_limit.blocks;
        if (limit == 0) {
            setLimit(leastOf(bytes()), false, 0);
            return;
        }
        const std::uint32_t kept = std::max(m_limit.onlyGave ? limit / 4 : limit / 2, leastOf(bytes()) / 2);
        void* last = m_cell.head;
        for (std::uint32_t i = 1; i < kept; ++i) {
            last = MemSlabs::nextOf(last);
        }
        MemSlabs::sGive(m_cellOffset, std::exchange(MemSlabs::nextOf(last), nullptr));
        setLimit(m_limit.onlyGave ? 2 * kept : limit, true, kept);
    }

    MemCell& m_cell;
    MemThreadCache::Limit& m_limit;
    const std::size_t m_cellOffset;
};

void emptyAll(MemThreadCache& cache) noexcept {
    for (std::size_t row = 1; row < MemRows::sCount(); ++row) {
        for (std::size_t sizeClass = 1; sizeClass < kMemClasses.count; ++sizeClass) {
            if (cache.limits[row][sizeClass].blocks != 0) {
                SlowCell(cache, row, sizeClass * MemClasses::kCellBytes).empty();
            }
        }
    }
}

/** Empties the cells of the cache if MemSlabs::sTurn() has changed. Called before anything is asked of the slabs. */
void emptyAtTurn(MemThreadCache& cache) noexcept {
    const std::uint32_t turn = MemSlabs::sTurn();
    if (cache.turn != turn) {
        cache.turn = turn;
        emptyAll(cache);
    }
}

/** Called at a thread's end. Its free blocks go back to the slabs. The cache keeps its counters and is parked for the
    next thread. */
void park(MemThreadCache& cache) noexcept {
    emptyAll(cache);
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

/** Gives this thread a cache. Returns nil when the thread is at its end or there is no memory. */
MemThreadCache* adopt() noexcept {
    if (t_state.ended) {
        return nullptr;
    }
    MemThreadCache* cache = nullptr;
    {
        const std::lock_guard lock(s_cachesMutex);
        cache = s_parkedCaches;
        if (cache) {
            s_parkedCaches = cache->nextParked;
        } else {
            // Mapped, so that the pages of unused rows and classes are never touched.
            void* const mapped =
                mmap(nullptr, sizeof(MemThreadCache), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (mapped == MAP_FAILED) {
                return nullptr;
            }
            cache = static_cast<MemThreadCache*>(mapped);
            cache->nextCache = s_caches.load(std::memory_order_relaxed);
            s_caches.store(cache, std::memory_order_release);
        }
    }
    t_owner.touch();
    t_state.own = cache;
    if (t_state.allocationsToFault == 0) {
        t_memCache = cache;
    }
    return cache;
}

MemThreadCache* ownCache() noexcept {
    return t_state.own ? t_state.own : adopt();
}

/** Calls f with the cache that this thread may change. */
template <class F>
auto withOwnCache(F f) {
    if (MemThreadCache* const cache = ownCache()) {
        emptyAtTurn(*cache);
        return f(*cache);
    }
    const std::lock_guard lock(s_orphanMutex);
    emptyAtTurn(s_orphanCache);
    return f(s_orphanCache);
}

} // namespace

__thread MemThreadCache* t_memCache __attribute__((tls_model("initial-exec"))) = &s_emptyCache;

void* MemPool::allocateSlow(std::size_t size, MemAccount& account) {
    sFaultPoint();
    const std::size_t row = account.row();
    if (size > MemClasses::kMaxBlock) {
        void* const block = MemSlabs::sTakeLarge(size);
        MemRows::sCountBlock(row, 1, static_cast<std::int64_t>(size));
        return block;
    }
    const std::size_t cellOffset = kMemClasses.cellOffset[(size + MemClasses::kGranule - 1) / MemClasses::kGranule];
    return withOwnCache([=](MemThreadCache& cache) { return SlowCell(cache, row, cellOffset).take(); });
}

void MemPool::deallocateSlow(void* block, MemAccount& account) noexcept {
    const std::size_t row = account.row();
    MemSlabHeader* const slab = slabOf(block);
    if (slab->cellOffset == 0) {
        MemRows::sCountBlock(row, -1, -static_cast<std::int64_t>(slab->largeBytes));
        MemSlabs::sGiveLarge(slab);
        return;
    }
    withOwnCache([=](MemThreadCache& cache) { SlowCell(cache, row, slab->cellOffset).give(block); });
}

void MemPool::sFaultPoint() {
    if (t_state.allocationsToFault != 0 && --t_state.allocationsToFault == 0) {
        sFailAfter(0);
        throw std::bad_alloc();
    }
}

MemUsage MemPool::sLive(std::size_t row) noexcept {
    MemUsage usage;
    for (std::size_t sizeClass = 1; sizeClass < kMemClasses.count; ++sizeClass) {
        std::uint32_t live = s_orphanCache.cells[row][sizeClass].live.load(std::memory_order_relaxed);
        for (MemThreadCache* cache = s_caches.load(std::memory_order_acquire); cache; cache = cache->nextCache) {
            live += cache->cells[row][sizeClass].live.load(std::memory_order_relaxed);
        }
        // Signed: while blocks move between threads, the sum may miss a block that was just handed out.
        const std::int64_t blocks = static_cast<std::int32_t>(live);
        usage.liveObjects += blocks;
        usage.liveBytes += blocks * kMemClasses.blockBytes[sizeClass];
    }
    return usage;
}

void MemPool::sFailAfter(std::uint64_t n) {
    t_state.allocationsToFault = n;
    t_memCache = n != 0 ? &s_emptyCache : t_state.own ? t_state.own : &s_emptyCache;
}

} // namespace Oskan
