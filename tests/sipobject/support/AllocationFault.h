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

/** Runs f with the n-th allocation failing. Returns whether there were that many; f may have caught the failure. */
template <class F>
bool withFaultAt(std::uint64_t n, F f) {
    struct Armed {
        explicit Armed(std::uint64_t count) { Oskan::MemAllocatorFaults::sFailAfter(count); }
        ~Armed() { Oskan::MemAllocatorFaults::sDisarm(); }
    } const armed(n);
    f();
    try {
        for (std::uint64_t i = 0; i < n; ++i) {
            Oskan::MemPool::sFaultPoint();
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}
