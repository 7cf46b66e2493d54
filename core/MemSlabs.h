#pragma once

#include "core/MemPool.h"

#include <cstddef>
#include <cstdint>

namespace Oskan {

/** Slabs, and the free blocks in them that no thread holds; of this folder only.

    A slab is 32 KB of a chunk, which is up to 1 MB of the C library's memory. It is in one of four states:

    - released: nothing of it is used, and its pages are with the system (or were never touched). A bit in its chunk says
      so. A chunk whose slabs are all released is freed.
    - empty: as above, but its pages are kept. In the list of empty slabs, which serves every size class; what that list
      has too much of, against the slabs in use, is released.
    - of a class, with free blocks: in its class's tree. Blocks are taken from the slab with the lowest address, so that
      the others get empty in time, whatever the order in which blocks come back. A free block is in its slab's own
      list, so a slab whose last block comes back is seen to be empty at once. While the slab's end is not yet cut into
      blocks it is `cutting`, in the tree or not; a class has one such slab at most.
    - of a class, without free blocks: in no list and no tree. Threads, or the program, hold all its blocks.

    A class's mutex guards its tree and the headers of the class's slabs; one more mutex guards the empty slabs and the
    chunks. The second may be taken while the first is held. Released pages are given to the system under no lock: the
    slab belongs to nobody else then.

    A large block has slabs of its own, which are released when it goes. */
class MemSlabs {
public:
    struct Blocks {
        void* head; ///< Each holds the address of the next.
        std::uint32_t count;
    };

    /** At least one free block of the class, at most `most`. Newly cut blocks are few, so that memory that is not
        needed is not touched.
        @throws std::bad_alloc when there is no memory. */
    static Blocks sTake(std::size_t cellOffset, std::uint32_t most);
    /** Takes a list of blocks of the class back; the last one holds nil. */
    static void sGive(std::size_t cellOffset, void* blocks) noexcept;

    /** The memory of a block that is larger than those of the classes: whole slabs, which follow each other in a chunk,
        or the C library's where these are too many.
        @throws std::bad_alloc when there is no memory. */
    static void* sTakeLarge(std::size_t bytes);
    static void sGiveLarge(MemSlabHeader* header) noexcept;

    /** Grows with every megabyte of slabs that comes from the system or goes back: the time for threads to give back
        what they hold and do not use. */
    static std::uint32_t sTurn() noexcept;

    /** Takes and frees all mutexes, for fork. */
    static void sLock();
    static void sUnlock();

    static void*& nextOf(void* block) { return *static_cast<void**>(block); }
};

} // namespace Oskan
