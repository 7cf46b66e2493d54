#include "core/MemSlabs.h"

#include "core/MemSlabTree.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdlib>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace Oskan {

/** A run of slabs, allocated at once. */
struct MemChunk {
    MemChunk* next; ///< In the list of all chunks, which keeps them reachable.
    MemChunk* previous;
    MemChunk* nextWithReleased;
    MemChunk* previousWithReleased;
    char* slabs;
    std::uint32_t count;
    std::uint32_t released; ///< One bit for each slab.

    std::uint32_t all() const { return ~std::uint32_t{0} >> (32 - count); }
};

namespace {

constexpr std::uint32_t kFirstChunkSlabs = 8;
constexpr std::uint32_t kLastChunkSlabs = 32;
constexpr std::size_t kMostRun = kFirstChunkSlabs; ///< Slabs of a large block; larger ones are from the C library.
constexpr std::size_t kLeastKept = 32;             ///< Empty slabs that are always kept: 1 MB.
constexpr std::size_t kKeptShare = 16;             ///< More are kept: up to one for so many slabs in use.
constexpr std::uint32_t kTurnSlabs = 32;
constexpr int kMostLooks = 64;

/** How many blocks of a size are cut at a time. */
std::uint32_t cutOf(std::size_t bytes) {
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(2048 / bytes, 1, 16));
}

/** How many slabs a large block takes. */
std::size_t slabsOf(std::size_t bytes) {
    return (MemClasses::kSlabHeaderBytes + bytes + MemClasses::kSlabBytes - 1) / MemClasses::kSlabBytes;
}

char* allocateAligned(std::size_t bytes) {
    void* memory = nullptr;
    if (posix_memalign(&memory, MemClasses::kSlabBytes, bytes) != 0) {
        throw std::bad_alloc();
    }
    return static_cast<char*>(memory);
}

/** A doubly linked list through two members of its elements. */
template <class T, T* T::*kNext, T* T::*kPrevious>
struct List {
    T* first = nullptr;

    void add(T* element) {
        element->*kNext = first;
        element->*kPrevious = nullptr;
        if (first) {
            first->*kPrevious = element;
        }
        first = element;
    }
    void remove(T* element) {
        (element->*kPrevious ? element->*kPrevious->*kNext : first) = element->*kNext;
        if (element->*kNext) {
            element->*kNext->*kPrevious = element->*kPrevious;
        }
    }
};

/** The slabs that belong to no class. */
class Store {
public:
    /** Takes a slab for a class. */
    MemSlabHeader* take() {
        const std::lock_guard lock(m_mutex);
        MemSlabHeader* slab = m_empty;
        if (slab) {
            m_empty = slab->next;
            --m_empties;
        } else {
            slab = takeReleased(1);
            m_moved.fetch_add(1, std::memory_order_relaxed);
        }
        ++m_used;
        return slab;
    }

    /** Takes contiguous slabs for a large block. They come from the system and go back to it, so that memory that the
        block does not fill is not resident. */
    MemSlabHeader* takeRun(std::uint32_t count) {
        const std::lock_guard lock(m_mutex);
        return takeReleased(count);
    }
    void giveRun(MemSlabHeader* slab, std::uint32_t count) noexcept { release(slab, count); }

    /** Takes back slabs of a class, linked by `next`. */
    void give(MemSlabHeader* slabs) noexcept {
        MemSlabHeader* surplus = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            while (MemSlabHeader* const slab = slabs) {
                slabs = slab->next;
                slab->next = m_empty;
                m_empty = slab;
                ++m_empties;
                --m_used;
            }
            while (m_empties > std::max(kLeastKept, m_used / kKeptShare)) {
                MemSlabHeader* const slab = m_empty;
                m_empty = slab->next;
                --m_empties;
                slab->next = surplus;
                surplus = slab;
            }
        }
        for (; surplus; m_moved.fetch_add(1, std::memory_order_relaxed)) {
            release(std::exchange(surplus, surplus->next), 1);
        }
    }

    std::uint32_t turn() const noexcept { return m_moved.load(std::memory_order_relaxed) / kTurnSlabs; }
    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }

private:
    static std::uint32_t runOf(std::uint32_t count) { return ~std::uint32_t{0} >> (32 - count); }

    /** Returns the bit of the slab at which the first run of `count` released slabs begins, or 0 when there is none. */
    static std::uint32_t findRun(std::uint32_t released, std::uint32_t count) {
        for (; count > 1; --count) {
            released &= released >> 1;
        }
        return released & (~released + 1);
    }

    /** Looks at the first kMostLooks chunks only. A run that it misses wastes addresses but no memory. */
    MemChunk* findChunk(std::uint32_t count) {
        int looks = 0;
        for (MemChunk* chunk = m_withReleased.first; chunk && looks < kMostLooks; chunk = chunk->nextWithReleased) {
            if (findRun(chunk->released, count)) {
                return chunk;
            }
            ++looks;
        }
        return addChunk();
    }

    MemSlabHeader* takeReleased(std::uint32_t count) {
        MemChunk* chunk = findChunk(count);
        const std::uint32_t first = findRun(chunk->released, count);
        chunk->released &= ~(runOf(count) * first);
        if (chunk->released == 0) {
            m_withReleased.remove(chunk);
        }
        char* const slab = chunk->slabs + static_cast<std::size_t>(std::countr_zero(first)) * MemClasses::kSlabBytes;
        MemSlabHeader* const header = new (slab) MemSlabHeader{}; // Touches its pages for the first time.
        header->chunk = chunk;
        return header;
    }

    MemChunk* addChunk() {
        // Not beside the slabs: that would be another page for each chunk.
        void* const memory = std::malloc(sizeof(MemChunk));
        void* slabs = nullptr;
        if (!memory || posix_memalign(&slabs, MemClasses::kSlabBytes, m_nextSlabs * MemClasses::kSlabBytes) != 0) {
            std::free(memory);
            throw std::bad_alloc();
        }
        MemChunk* const chunk = new (memory) MemChunk{};
        chunk->slabs = static_cast<char*>(slabs);
        chunk->count = m_nextSlabs;
        chunk->released = chunk->all();
        m_nextSlabs = std::min(2 * m_nextSlabs, kLastChunkSlabs);
        m_chunks.add(chunk);
        m_withReleased.add(chunk);
        return chunk;
    }

    void release(MemSlabHeader* slab, std::uint32_t count) noexcept {
        MemChunk* const chunk = slab->chunk;
        const auto index =
            static_cast<std::size_t>(reinterpret_cast<char*>(slab) - chunk->slabs) / MemClasses::kSlabBytes;
        madvise(slab, count * MemClasses::kSlabBytes, MADV_DONTNEED); // If it fails, the pages are only kept.
        {
            const std::lock_guard lock(m_mutex);
            if (chunk->released == 0) {
                m_withReleased.add(chunk);
            }
            chunk->released |= runOf(count) << index;
            if (chunk->released != chunk->all()) {
                return;
            }
            m_withReleased.remove(chunk);
            m_chunks.remove(chunk);
        }
        std::free(chunk->slabs);
        std::free(chunk);
    }

    std::mutex m_mutex;
    MemSlabHeader* m_empty = nullptr;
    std::size_t m_empties = 0;
    std::size_t m_used = 0; ///< Slabs that belong to a class.
    List<MemChunk, &MemChunk::next, &MemChunk::previous> m_chunks;
    List<MemChunk, &MemChunk::nextWithReleased, &MemChunk::previousWithReleased> m_withReleased;
    std::uint32_t m_nextSlabs = kFirstChunkSlabs; ///< Slabs of the next chunk; malloc touches a page for each chunk.
    std::atomic<std::uint32_t> m_moved{0};        ///< Number of class slabs that came from the system or went back.
};

/** The slabs of one size class. */
struct alignas(64) SizeClass {
    std::mutex mutex;
    MemSlabTree withBlocks; ///< The slabs that have free blocks that were in use before.
    MemSlabHeader* cutting = nullptr;
};

constinit Store s_store;
constinit std::array<SizeClass, MemClasses::kClasses> s_classes{};

/** Cuts blocks from the class's `cutting` slab, at most `most`. Takes a new slab if there is none. */
MemSlabs::Blocks cut(SizeClass& sizeClass, std::size_t cellOffset, std::uint32_t most) {
    const std::size_t bytes = kMemClasses.bytesOfCell(cellOffset);
    if (!sizeClass.cutting) {
        MemSlabHeader* const slab = s_store.take();
        slab->cellOffset = static_cast<std::uint32_t>(cellOffset);
        slab->held = 0;
        slab->blocks = nullptr;
        slab->uncut = reinterpret_cast<char*>(slab) + MemClasses::kSlabHeaderBytes;
        sizeClass.cutting = slab;
    }
    MemSlabHeader* const slab = sizeClass.cutting;
    char* const end = reinterpret_cast<char*>(slab) + MemClasses::kSlabBytes;
    const auto left = static_cast<std::uint32_t>(static_cast<std::size_t>(end - slab->uncut) / bytes);
    const std::uint32_t count = std::min({cutOf(bytes), left, most});
    char* const first = slab->uncut;
    slab->uncut += count * bytes;
    slab->held += count;
    if (count == left) {
        sizeClass.cutting = nullptr;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        MemSlabs::nextOf(first + i * bytes) = i + 1 < count ? first + (i + 1) * bytes : nullptr;
    }
    return {first, count};
}

} // namespace

MemSlabs::Blocks MemSlabs::sTake(std::size_t cellOffset, std::uint32_t most) {
    SizeClass& sizeClass = s_classes[cellOffset / MemClasses::kCellBytes];
    const std::lock_guard lock(sizeClass.mutex);
    Blocks taken{nullptr, 0};
    while (MemSlabHeader* const slab = taken.count < most ? sizeClass.withBlocks.first() : nullptr) {
        for (; slab->blocks && taken.count < most; ++taken.count, ++slab->held) {
            void* const block = slab->blocks;
            slab->blocks = nextOf(block);
            nextOf(block) = taken.head;
            taken.head = block;
        }
        if (!slab->blocks) {
            sizeClass.withBlocks.remove(slab);
        }
    }
    return taken.head ? taken : cut(sizeClass, cellOffset, most);
}

void MemSlabs::sGive(std::size_t cellOffset, void* blocks) noexcept {
    SizeClass& sizeClass = s_classes[cellOffset / MemClasses::kCellBytes];
    MemSlabHeader* emptied = nullptr;
    {
        const std::lock_guard lock(sizeClass.mutex);
        while (void* const block = blocks) {
            blocks = nextOf(block);
            MemSlabHeader* const slab = MemPool::slabOf(block);
            if (!slab->blocks) {
                sizeClass.withBlocks.add(slab);
            }
            nextOf(block) = slab->blocks;
            slab->blocks = block;
            if (--slab->held != 0) {
                continue;
            }
            sizeClass.withBlocks.remove(slab);
            if (sizeClass.cutting == slab) {
                sizeClass.cutting = nullptr;
            }
            slab->next = emptied;
            emptied = slab;
        }
    }
    if (emptied) {
        s_store.give(emptied);
    }
}

void MemSlabs::sLock() {
    for (SizeClass& each : s_classes) {
        each.mutex.lock();
    }
    s_store.lock();
}

void MemSlabs::sUnlock() {
    s_store.unlock();
    for (SizeClass& each : s_classes) {
        each.mutex.unlock();
    }
}

void* MemSlabs::sTakeLarge(std::size_t bytes) {
    if (bytes > PTRDIFF_MAX - MemClasses::kSlabBytes) {
        throw std::bad_alloc();
    }
    MemSlabHeader* header = nullptr;
    if (const std::size_t slabs = slabsOf(bytes); slabs <= kMostRun) {
        header = s_store.takeRun(static_cast<std::uint32_t>(slabs));
    } else {
        header = new (allocateAligned(MemClasses::kSlabHeaderBytes + bytes)) MemSlabHeader{};
    }
    header->largeBytes = bytes;
    return reinterpret_cast<char*>(header) + MemClasses::kSlabHeaderBytes;
}

void MemSlabs::sGiveLarge(MemSlabHeader* header) noexcept {
    if (header->chunk) {
        s_store.giveRun(header, static_cast<std::uint32_t>(slabsOf(header->largeBytes)));
    } else {
        std::free(header);
    }
}

std::uint32_t MemSlabs::sTurn() noexcept {
    return s_store.turn();
}

} // namespace Oskan
