#include "core/MemRows.h"

#include "core/ForkLock.h"

#include <mutex>

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
        if (name == s_rows[row].name) {
            return row;
        }
    }
    return 0;
}

std::size_t MemRows::sFindOrAdd(const char* name) noexcept {
    if (const std::size_t row = sFind(name)) {
        return row;
    }
    const std::lock_guard lock(s_rowsMutex);
    if (const std::size_t row = sFind(name)) {
        return row;
    }
    const std::size_t row = sCount();
    if (row == kRows) {
        return kRows - 1;
    }
    s_rows[row].name = row == kRows - 1 ? "(other accounts)" : name;
    s_count.store(row + 1, std::memory_order_release);
    return row;
}

} // namespace Oskan
