#pragma once

#include "core/MemPool.h"

#include <cstdint>

namespace Oskan {

/** Makes allocations fail, for tests. Affects only the calling thread. */
class MemAllocatorFaults {
public:
    /** The n-th allocation from now, counted from 1, throws std::bad_alloc; the later ones succeed again. */
    static void sFailAfter(std::uint64_t n) { MemPool::sFailAfter(n); }
    static void sDisarm() { sFailAfter(0); }
};

} // namespace Oskan
