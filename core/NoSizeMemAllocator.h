#pragma once

#include "core/MemAccount.h"

#include <cstddef>

namespace Oskan {

/** Allocates accounted blocks, for callers that do not know the size of a block when they free it.

    An account is given as an object, which is faster, or by its name, which costs a look-up.
    All operations are usable from any thread. A block may be freed by another thread than the one that allocated it. */
class NoSizeMemAllocator {
public:
    /** @return at least size bytes, aligned to 8, and to 16 when size is a multiple of 16.
        @throws std::bad_alloc when there is no memory. */
    static void* allocate(std::size_t size, MemAccount& account) { return account.allocate(size); }
    /** @param accountName a literal, or text that lives as long as the process. */
    static void* allocate(std::size_t size, const char* accountName) { return MemAccount(accountName).allocate(size); }

    /** Nil is allowed. */
    static void deallocate(void* block, MemAccount& account) noexcept { account.deallocate(block); }
    static void deallocate(void* block, const char* accountName) noexcept { MemAccount(accountName).deallocate(block); }
};

} // namespace Oskan
