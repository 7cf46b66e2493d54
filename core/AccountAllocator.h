#pragma once

#include "core/MemAccount.h"

#include <cstddef>

namespace Oskan {

/** The allocator of a standard container whose memory is counted under an account. It has no state. */
template <class T, MemAccount& account>
struct AccountAllocator {
    static_assert(alignof(T) <= 8);

    using value_type = T;
    template <class U>
    struct rebind {
        using other = AccountAllocator<U, account>;
    };

    AccountAllocator() = default;
    template <class U>
    AccountAllocator(const AccountAllocator<U, account>&) noexcept {}

    /** @throws std::bad_alloc when there is no memory. */
    T* allocate(std::size_t count) { return static_cast<T*>(account.allocate(count * sizeof(T))); }
    void deallocate(T* block, std::size_t count) noexcept { account.deallocate(block, count * sizeof(T)); }

    template <class U>
    bool operator==(const AccountAllocator<U, account>&) const noexcept {
        return true;
    }
};

} // namespace Oskan
