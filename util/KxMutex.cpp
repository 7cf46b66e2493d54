#include "util/KxMutex.h"

#include "core/DefaultStaticMemAllocator.h"

#include <new>

namespace {

constinit Oskan::MemAccount s_account{"KxMutex"};

} // namespace

KxMutex* KxMutex::sAllocate() {
    return new (Oskan::DefaultStaticMemAllocator::allocate(sizeof(KxMutex), s_account)) KxMutex;
}

void KxMutex::sRecycle(KxMutex* mutex) noexcept {
    if (mutex != nullptr) {
        mutex->~KxMutex();
        Oskan::DefaultStaticMemAllocator::deallocate(mutex, sizeof(KxMutex), s_account);
    }
}
