#pragma once

#include "core/CoreApi.h"
#include "core/MemAccount.h"

#include <cstddef>

namespace Oskan {

/** Accounted blocks for those who do not know a block's size when they give it back.

    An account is given as an object, which is the fast way, or by its name, which costs a look-up.
    All operations are usable from any thread; a block may be given back by another thread than took it. */
class KX_CORE_API NoSizeMemAllocator {
public:
    /** @return at least size bytes, aligned to 8, and to 16 when size is a multiple of 16.
        @throws std::bad_alloc when there is no memory. */
    static void* allocate(std::size_t size, MemAccount& account) { return account.allocate(size); }
    /** @param accountName a literal, or text that lives as long as the process. */
    static void* allocate(std::size_t size, const char* accountName);

    /** Nil is allowed. */
    static void deallocate(void* block, MemAccount& account) noexcept { account.deallocate(block); }
    static void deallocate(void* block, const char* accountName) noexcept;
};

/** As NoSizeMemAllocator, for those who know the size when they give a block back. The two may be mixed. */
class KX_CORE_API DefaultStaticMemAllocator : public NoSizeMemAllocator {
public:
    using NoSizeMemAllocator::deallocate;

    /** @param size as it was given to allocate. */
    static void deallocate(void* block, std::size_t size, MemAccount& account) noexcept {
        account.deallocate(block, size);
    }
    static void deallocate(void* block, std::size_t size, const char* accountName) noexcept;
};

} // namespace Oskan
