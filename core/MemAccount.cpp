#include "core/MemAccount.h"

#include "core/ForkLock.h"
#include "core/MemRows.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

namespace Oskan {

namespace {

constinit std::mutex s_rowsMutex;
const ForkLockOf<s_rowsMutex> s_forkLock{ForkLock::Order::Accounts};

} // namespace

constinit std::array<MemRows::Row, MemRows::kRows> MemRows::s_rows{};
constinit std::atomic<std::size_t> MemRows::s_count{1};

std::size_t MemRows::sFind(std::string_view name) noexcept {
    const std::size_t count = sCount();
    for (std::size_t row = 1; row < count; ++row) {
        if (name == s_rows[row].name)
            return row;
    }
    return 0;
}

std::size_t MemRows::sFindOrAdd(const char* name) noexcept {
    if (const std::size_t row = sFind(name))
        return row;
    const std::lock_guard lock(s_rowsMutex);
    if (const std::size_t row = sFind(name))
        return row;
    const std::size_t row = sCount();
    if (row == kRows)
        return kRows - 1;
    s_rows[row].name = row == kRows - 1 ? "(other accounts)" : name;
    s_count.store(row + 1, std::memory_order_release);
    return row;
}

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
    if (size > PTRDIFF_MAX - sizeof(PlainHeader))
        throw std::bad_alloc();
    void* const memory = std::malloc(sizeof(PlainHeader) + size);
    if (!memory)
        throw std::bad_alloc();
    PlainHeader* const header = new (memory) PlainHeader{size};
    MemRows::sCountBlock(row(), 1, static_cast<std::int64_t>(size));
    return header + 1;
}

void MemAccount::deallocatePlain(void* block) noexcept {
    if (!block)
        return;
    PlainHeader* const header = static_cast<PlainHeader*>(block) - 1;
    MemRows::sCountBlock(row(), -1, -static_cast<std::int64_t>(header->bytes));
    std::free(header);
}

#endif

namespace {

MemUsage usageOfRow(std::size_t row) {
    MemUsage usage = MemPool::sLive(row);
    usage.liveObjects += MemRows::sObjects(row);
    usage.liveBytes += MemRows::sBytes(row);
    return usage;
}

} // namespace

MemUsage MemAccounts::sGetUsage(std::string_view name) {
    const std::size_t row = MemRows::sFind(name);
    return row == 0 ? MemUsage{} : usageOfRow(row);
}

std::vector<MemAccountUsage> MemAccounts::sList() {
    std::vector<MemAccountUsage> list;
    for (std::size_t row = 1; row < MemRows::sCount(); ++row)
        list.push_back({MemRows::sName(row), usageOfRow(row)});
    return list;
}

} // namespace Oskan
