#include "core/DefaultStaticMemAllocator.h"
#include "core/MemAccounts.h"
#include "core/MemAllocatorFaults.h"
#include "core/MemPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <thread>
#include <unistd.h>
#include <vector>

// These tests use the pool, also in builds whose classes use plain malloc.

using namespace Oskan;

namespace {

struct Block {
    unsigned char* bytes;
    std::size_t size;
};

Block take(MemAccount& account, std::size_t size) {
    return {static_cast<unsigned char*>(MemPool::allocate(size, account)), size};
}

/** Frees and allocates blocks after its thread's cache is destroyed; a fault crashes the run. */
struct UsesPoolAtEnd {
    MemAccount& account;
    void* block = nullptr;
    ~UsesPoolAtEnd() {
        MemPool::deallocate(block, account);
        for (const std::size_t size : {16U, 500U, 9000U}) {
            const Block another = take(account, size);
            std::memset(another.bytes, 1, size);
            MemPool::deallocate(another.bytes, account);
        }
    }
};
constinit MemAccount s_exitAccount{"pool.exit"};
UsesPoolAtEnd s_usesPoolAtExit{s_exitAccount};

std::int64_t liveObjects(const char* name) {
    return MemAccounts::sGetUsage(name).liveObjects;
}

} // namespace

TEST(MemPoolTest, BlocksAreAlignedApartAndLargeEnough) {
    static constinit MemAccount s_account{"pool.sizes"};
    std::vector<Block> blocks;
    // Both sides of every size class; then sizes of several slabs, and of more than a span may have.
    for (std::size_t size = 0; size <= 4096; ++size) {
        blocks.push_back(take(s_account, size));
    }
    for (std::size_t i = 1; i < kMemClasses.count; ++i) {
        blocks.push_back(take(s_account, kMemClasses.blockBytes[i]));
        blocks.push_back(take(s_account, std::size_t{kMemClasses.blockBytes[i]} + 1));
    }
    for (const std::size_t slabs : {1U, 2U, 8U, 9U, 40U}) {
        const std::size_t most = slabs * MemClasses::kSlabBytes - MemClasses::kSlabHeaderBytes;
        blocks.push_back(take(s_account, most));
        blocks.push_back(take(s_account, most + 1));
    }
    std::int64_t asked = 0;
    for (const auto& [bytes, size] : blocks) {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % (size % 16 == 0 ? 16 : 8), 0U) << size;
        std::memset(bytes, static_cast<int>(size % 251), size);
        asked += static_cast<std::int64_t>(size);
    }
    const MemUsage usage = MemAccounts::sGetUsage("pool.sizes");
    EXPECT_EQ(usage.liveObjects, static_cast<std::int64_t>(blocks.size()));
    EXPECT_GE(usage.liveBytes, asked);
    EXPECT_LE(usage.liveBytes, asked + asked / 8);
    for (const auto& [bytes, size] : blocks) {
        ASSERT_EQ(std::count(bytes, bytes + size, size % 251), static_cast<std::ptrdiff_t>(size)) << "overwritten";
        size % 2 ? MemPool::deallocate(bytes, s_account) : MemPool::deallocate(bytes, size, s_account);
    }
    EXPECT_EQ(liveObjects("pool.sizes"), 0);
    EXPECT_EQ(MemAccounts::sGetUsage("pool.sizes").liveBytes, 0);
}

TEST(MemAllocatorTest, AccountsOfOneNameAreOneByNameOrObject) {
    static constinit MemAccount s_one{"allocator.mixed"};
    static constinit MemAccount s_other{"allocator.mixed"};
    void* const byName = NoSizeMemAllocator::allocate(24, "allocator.mixed");
    void* const byObject = DefaultStaticMemAllocator::allocate(5000, s_one);
    EXPECT_EQ(liveObjects("allocator.mixed"), 2);
    EXPECT_EQ(liveObjects("allocator.mixe"), 0);
    EXPECT_GE(MemAccounts::sGetUsage("allocator.mixed").liveBytes, 5024);
    DefaultStaticMemAllocator::deallocate(byName, 24, s_other);
    NoSizeMemAllocator::deallocate(byObject, "allocator.mixed");
    NoSizeMemAllocator::deallocate(nullptr, s_one);
    NoSizeMemAllocator::deallocate(nullptr, "allocator.mixed");
    DefaultStaticMemAllocator::deallocate(nullptr, 24, "allocator.mixed");
    EXPECT_EQ(liveObjects("allocator.mixed"), 0);
    EXPECT_EQ(MemAccounts::sGetUsage("allocator.mixed").liveBytes, 0);
    s_usesPoolAtExit.block = take(s_exitAccount, 40).bytes;
    const auto isMixed = [](const auto& each) { return each.name == "allocator.mixed"; };
    EXPECT_EQ(std::ranges::count_if(MemAccounts::sList(), isMixed), 1);
}

TEST(MemAllocatorTest, ClassOperatorsFollowTheRealSize) {
    static constinit MemAccount s_account{"allocator.class"};
    struct Base {
        virtual ~Base() = default;
        KX_MEM_ACCOUNT_OPERATORS(s_account);
    };
    struct Derived : Base {
        char more[300] = {};
    };
    struct Throws : Base {
        Throws() { throw 1; }
    };
    std::unique_ptr<Base> base = std::make_unique<Derived>();
    EXPECT_GE(MemAccounts::sGetUsage("allocator.class").liveBytes, 300);
    EXPECT_THROW(static_cast<void>(new Throws), int);
    EXPECT_EQ(liveObjects("allocator.class"), 1);
    EXPECT_STREQ(Derived::getMemAccountName(), "allocator.class");
    base.reset();
    EXPECT_EQ(MemAccounts::sGetUsage("allocator.class").liveBytes, 0);
}

TEST(MemAllocatorTest, TheNthAllocationFailsAndNoOther) {
    static constinit MemAccount s_account{"allocator.faults"};
    const auto fails = [](std::size_t size) {
        try {
            NoSizeMemAllocator::deallocate(NoSizeMemAllocator::allocate(size, s_account), s_account);
            return false;
        } catch (const std::bad_alloc&) {
            return true;
        }
    };
    MemAllocatorFaults::sFailAfter(3);
    EXPECT_EQ((std::vector<bool>{fails(64), fails(9000), fails(64), fails(64)}),
              (std::vector<bool>{false, false, true, false}));
    MemAllocatorFaults::sFailAfter(1);
    MemAllocatorFaults::sDisarm();
    EXPECT_FALSE(fails(64));
    EXPECT_TRUE(fails(static_cast<std::size_t>(-1)));
    EXPECT_TRUE(fails(static_cast<std::size_t>(PTRDIFF_MAX)));
    EXPECT_EQ(liveObjects("allocator.faults"), 0);
}

TEST(MemPoolThreadTest, AnEndedThreadLeavesItsCountsAndBlocks) {
    static constinit MemAccount s_account{"pool.ended"};
    std::set<unsigned char*> addresses;
    for (const std::size_t size : {48U, 1000U}) {
        for (int round = 0; round < 20; ++round) {
            std::vector<Block> blocks;
            std::jthread([&] {
                for (int i = 0; i < 1000; ++i) {
                    blocks.push_back(take(s_account, size));
                    addresses.insert(blocks.back().bytes);
                }
                for (; blocks.size() > 500; blocks.pop_back()) {
                    MemPool::deallocate(blocks.back().bytes, s_account);
                }
            }).join();
            EXPECT_EQ(liveObjects("pool.ended"), 500);
            for (const Block& block : blocks) {
                MemPool::deallocate(block.bytes, s_account);
            }
            EXPECT_EQ(liveObjects("pool.ended"), 0);
        }
        EXPECT_LT(addresses.size(), 2000U);
        addresses.clear();
    }
}

TEST(MemPoolThreadTest, ThreadLocalDestructorsMayStillAllocate) {
    static constinit MemAccount s_account{"pool.late"};
    for (int round = 0; round < 3; ++round) {
        std::jthread([] {
            thread_local UsesPoolAtEnd late{s_account}; // Made before the thread's cache, so destroyed after it.
            late.block = MemPool::allocate(200, s_account);
        });
    }
    EXPECT_EQ(liveObjects("pool.late"), 0);
}

/** Each thread fills its blocks with a pattern, exchanges some with other threads, and changes the sizes it uses. */
TEST(MemPoolThreadTest, ManyThreadsAtOnce) {
    static constinit MemAccount s_account{"pool.many"};
    std::mutex mutex;
    std::vector<Block> exchanged(64);
    const auto drop = [](const Block& block) {
        const auto filled = static_cast<unsigned char>(block.size);
        if (std::count(block.bytes, block.bytes + block.size, filled) != static_cast<std::ptrdiff_t>(block.size)) {
            ADD_FAILURE() << "overwritten";
        }
        MemPool::deallocate(block.bytes, s_account);
    };
    {
        std::vector<std::jthread> threads;
        for (unsigned t = 0; t < 8; ++t) { // some start after others have ended
            threads.emplace_back([&, t] {
                constexpr std::size_t kLargest[] = {64, 700, 40, 20000, 5000, 300, 100000, 16};
                std::vector<Block> held(256);
                unsigned random = t + 1;
                for (unsigned i = 0; i < 8000; ++i) {
                    random = random * 1664525 + 1013904223;
                    Block& slot = held[random >> 24];
                    drop(slot);
                    slot = take(s_account, 1 + (random >> 8) % kLargest[(i / 1000 + t) % 8]);
                    std::memset(slot.bytes, static_cast<int>(slot.size), slot.size);
                    if (i % 4 == 0) {
                        const std::lock_guard lock(mutex);
                        std::swap(slot, exchanged[random >> 26]);
                    }
                }
                std::for_each(held.begin(), held.end(), drop);
            });
            if (t == 3) {
                threads.erase(threads.begin(), threads.begin() + 2);
            }
        }
        for (int i = 0; i < 100; ++i) {
            MemAccounts::sList();
        }
    }
    std::for_each(exchanged.begin(), exchanged.end(), drop);
    EXPECT_EQ(liveObjects("pool.many"), 0);
    EXPECT_EQ(MemAccounts::sGetUsage("pool.many").liveBytes, 0);
}

#ifndef KX_PLAIN_MALLOC
static std::int64_t residentBytes() {
    std::int64_t total = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

TEST(MemPoolTest, ResidentMemoryIsThatOfTheBlocks) {
    static constinit MemAccount s_account{"pool.resident"};
    std::vector<Block> blocks(10000 * 7); // Touched before it is measured.
    blocks.clear();
    constexpr std::size_t kPieces[] = {1632, 640, 320, 200, 96, 64, 48}; // of a message of about 3,000 bytes
    for (const std::size_t size : kPieces) {
        MemPool::deallocate(take(s_account, size).bytes, s_account); // so that the pool has its own memory
    }
    const std::int64_t before = residentBytes();
    for (int i = 0; i < 10000; ++i) {
        for (const std::size_t size : kPieces) {
            blocks.push_back(take(s_account, size));
            std::memset(blocks.back().bytes, 1, size);
        }
    }
    const std::int64_t grown = residentBytes() - before;
    const std::int64_t bytes = MemAccounts::sGetUsage("pool.resident").liveBytes;
    EXPECT_LT(grown, bytes + bytes / 50);
    for (const Block& block : blocks) {
        MemPool::deallocate(block.bytes, s_account);
    }
}

/** Uses one size after another, and frees blocks on this or another thread: memory must not add up. */
TEST(MemPoolThreadTest, MemoryOfOneSizeServesAllOthersAndGoesBack) {
    static constinit MemAccount s_account{"pool.shapes"};
    constexpr std::int64_t kBytes = 16 * 1024 * 1024;
    std::vector<Block> blocks(kBytes / 48 + 1); // Touched before it is measured.
    blocks.clear();
    const std::int64_t before = residentBytes();
    for (const std::size_t size : {48U, 1000U, 64U, 12000U, 200U, 20000U, 70000U, 300U, 3000U, 250000U, 96U}) {
        for (std::int64_t bytes = 0; bytes < kBytes; bytes += static_cast<std::int64_t>(size)) {
            blocks.push_back(take(s_account, size));
            std::memset(blocks.back().bytes, 1, size);
        }
        EXPECT_LT(residentBytes() - before, kBytes + kBytes / 2) << size;
        const auto drop = [&] {
            for (const Block& block : blocks) {
                MemPool::deallocate(block.bytes, s_account);
            }
        };
        size % 3 == 0 ? drop() : std::jthread(drop).join();
        blocks.clear();
        EXPECT_LT(residentBytes() - before, kBytes / 5) << size;
    }
}
#endif
