#include "core/MemAllocator.h"

namespace Oskan {

// An account object finds its row by its name, so a temporary one is enough.

void* NoSizeMemAllocator::allocate(std::size_t size, const char* accountName) {
    return MemAccount(accountName).allocate(size);
}

void NoSizeMemAllocator::deallocate(void* block, const char* accountName) noexcept {
    MemAccount(accountName).deallocate(block);
}

void DefaultStaticMemAllocator::deallocate(void* block, std::size_t size, const char* accountName) noexcept {
    MemAccount(accountName).deallocate(block, size);
}

} // namespace Oskan
