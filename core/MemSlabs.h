#pragma once

#include "core/MemPool.h"

#include <cstddef>
#include <cstdint>

namespace Oskan {

/** Manages the slabs, and the free blocks in them that no thread holds; internal to this folder.

    A slab is 32 KB of a chunk, which is up to 1 MB of the C library's memory. It is in one of four states:

    - released: no part of it is used, and its pages are with the system (or were never touched). A bit in its chunk
      marks it. A chunk whose slabs are all released is freed.
    - empty: as above, but its pages are kept. It is in the list of empty slabs, which serves every size class. When the
      list is too long compared with the number of slabs in use, the surplus is released.
    - of a class, with free blocks: it is in the tree of its class. Blocks are taken from the slab with the lowest
      address, so that the other slabs become empty in time, in whatever order blocks come back. A free block is in the
      list of its own slab, so that a slab is known to be empty as soon as its last block comes back. While the end of a
      slab is not yet cut into blocks, the slab is `cutting`, whether it is in the tree or not; a class has at most one
      such slab.
    - of a class, without free blocks: it is in no list and no tree. Threads or the program hold all its blocks.

    A class's mutex guards its tree and the headers of its slabs. One more mutex guards the empty slabs and the chunks;
    it may be taken while a class's mutex is held. Released pages are given to the system without a lock, because
    nothing else refers to the slab then.

    A large block has slabs of its own, which are released when the block is freed. */
class MemSlabs {
public:
    struct Blocks {
        void* head; ///< Each holds the address of the next.
        std::uint32_t count;
    };

    /** Takes at least one and at most `most` free blocks of the class. New blocks are cut a few at a time, so that
        memory that is not needed is not touched.
        @throws std::bad_alloc when there is no memory. */
    static Blocks sTake(std::size_t cellOffset, std::uint32_t most);
    /** Takes back a list of blocks of the class; the last block holds nil. */
    static void sGive(std::size_t cellOffset, void* blocks) noexcept;

    /** The memory of a block that is larger than those of the classes: contiguous slabs of a chunk, or memory of the C
        library when these would be too many.
        @throws std::bad_alloc when there is no memory. */
    static void* sTakeLarge(std::size_t bytes);
    static void sGiveLarge(MemSlabHeader* header) noexcept;

    /** Increases with every megabyte of slabs that comes from the system or goes back. A thread that sees a new value
        gives back the free blocks that it holds. */
    static std::uint32_t sTurn() noexcept;

    /** Takes and frees all mutexes, for fork. */
    static void sLock();
    static void sUnlock();

    static void*& nextOf(void* block) { return *static_cast<void**>(block); }
};

} // namespace Oskan
