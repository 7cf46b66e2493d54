#pragma once

#include "core/NoSizeMemAllocator.h"

namespace Oskan {

/** As NoSizeMemAllocator, for callers that know the size of a block when they free it. The two may be mixed. */
class DefaultStaticMemAllocator : public NoSizeMemAllocator {
public:
    using NoSizeMemAllocator::deallocate;

    /** @param size as it was given to allocate. */
    static void deallocate(void* block, std::size_t size, MemAccount& account) noexcept {
        account.deallocate(block, size);
    }
    static void deallocate(void* block, std::size_t size, const char* accountName) noexcept {
        MemAccount(accountName).deallocate(block, size);
    }
};

} // namespace Oskan
