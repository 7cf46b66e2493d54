#pragma once

#include "core/MemAllocatorFaults.h"

#include <dlfcn.h>

#include <cstdint>
#include <new>

// Plain allocations count towards the armed fault as those of the pool do. To be included by one file of a program.
#if !defined(KX_PLAIN_MALLOC) || !defined(__clang__) // clang's sanitizers define these operators
void* operator new(std::size_t size) {
    Oskan::MemPool::sFaultPoint();
    static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znwm"));
    return next(size);
}
void* operator new[](std::size_t size) {
    Oskan::MemPool::sFaultPoint();
    static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znam"));
    return next(size);
}
#endif

/** While it is in scope, the n-th allocation fails. In the end, `hasFailed` tells whether there were that many; what
    failed may have been caught. */
class AllocationFault {
public:
    AllocationFault(std::uint64_t n, bool& hasFailed) : m_n(n), m_hasFailed(hasFailed) {
        Oskan::MemAllocatorFaults::sFailAfter(n);
    }
    ~AllocationFault() {
        m_hasFailed = true;
        try {
            for (std::uint64_t i = 0; i < m_n; ++i) {
                Oskan::MemPool::sFaultPoint();
            }
        } catch (const std::bad_alloc&) {
            m_hasFailed = false;
        }
        Oskan::MemAllocatorFaults::sDisarm();
    }
    AllocationFault(const AllocationFault&) = delete;

private:
    std::uint64_t m_n;
    bool& m_hasFailed;
};
