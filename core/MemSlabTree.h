#pragma once

#include "core/MemPool.h"

#include <cstdint>
#include <functional>

namespace Oskan {

/** Slabs in the order of their addresses, linked through `next` and `previous` of their headers; internal to this
    folder. This is a treap: a search tree by address that is also a heap by a hash of the address, and is therefore
    balanced in whatever order slabs are added. */
class MemSlabTree {
public:
    MemSlabHeader* first() const {
        MemSlabHeader* slab = m_root;
        while (slab && slab->previous) {
            slab = slab->previous;
        }
        return slab;
    }

    void add(MemSlabHeader* slab) {
        MemSlabHeader** at = &m_root;
        while (*at && rankOf(*at) > rankOf(slab)) {
            at = isBefore(slab, *at) ? &(*at)->previous : &(*at)->next;
        }
        MemSlabHeader* below = *at;
        *at = slab;
        MemSlabHeader** before = &slab->previous;
        MemSlabHeader** after = &slab->next;
        while (below) { // Split the subtree at the slab.
            MemSlabHeader**& side = isBefore(below, slab) ? before : after;
            *side = below;
            side = &side == &before ? &below->next : &below->previous;
            below = *side;
        }
        *before = nullptr;
        *after = nullptr;
    }

    void remove(MemSlabHeader* slab) {
        MemSlabHeader** at = &m_root;
        while (*at != slab) {
            at = isBefore(slab, *at) ? &(*at)->previous : &(*at)->next;
        }
        MemSlabHeader* before = slab->previous;
        MemSlabHeader* after = slab->next;
        while (before && after) { // Join the two subtrees.
            MemSlabHeader*& higher = rankOf(before) > rankOf(after) ? before : after;
            *at = higher;
            at = &higher == &before ? &higher->next : &higher->previous;
            higher = *at;
        }
        *at = before ? before : after;
    }

private:
    static bool isBefore(const MemSlabHeader* a, const MemSlabHeader* b) { return std::less<>()(a, b); }
    static std::uint64_t rankOf(const MemSlabHeader* slab) {
        return reinterpret_cast<std::uintptr_t>(slab) / MemClasses::kSlabBytes * 0x9E3779B97F4A7C15U;
    }

    MemSlabHeader* m_root = nullptr;
};

} // namespace Oskan
