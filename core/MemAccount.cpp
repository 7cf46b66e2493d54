#include "core/MemAccount.h"

#include "core/MemRows.h"

#include <cstdlib>
#include <new>

namespace Oskan {

std::size_t MemAccount::row() noexcept {
    std::size_t offset = m_rowOffset.load(std::memory_order_relaxed);
    if (offset == 0) {
        offset = MemRows::sFindOrAdd(m_name) * MemThreadCache::kRowBytes;
        m_rowOffset.store(static_cast<std::uint32_t>(offset), std::memory_order_relaxed);
    }
    return offset / MemThreadCache::kRowBytes;
}

#ifdef KX_PLAIN_MALLOC

namespace {

/** Precedes every block; its size keeps the block aligned to 16. */
struct alignas(16) PlainHeader {
    std::size_t bytes;
};

} // namespace

void* MemAccount::allocatePlain(std::size_t size) {
    MemPool::sFaultPoint();
    if (size > PTRDIFF_MAX - sizeof(PlainHeader)) {
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(sizeof(PlainHeader) + size);
    if (!memory) {
        throw std::bad_alloc();
    }
    PlainHeader* const header = new (memory) PlainHeader{size};
    MemRows::sCountBlock(row(), 1, static_cast<std::int64_t>(size));
    return header + 1;
}

void MemAccount::deallocatePlain(void* block) noexcept {
    if (!block) {
        return;
    }
    PlainHeader* const header = static_cast<PlainHeader*>(block) - 1;
    MemRows::sCountBlock(row(), -1, -static_cast<std::int64_t>(header->bytes));
    std::free(header);
}

#endif

} // namespace Oskan
