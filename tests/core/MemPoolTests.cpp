#include "core/MemAllocator.h"
#include "core/MemPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
#include <semaphore>
#include <set>
#include <thread>
#include <unistd.h>
#include <vector>

// The pool itself is under test here, in the builds too whose classes use plain malloc.

using Oskan::DefaultStaticMemAllocator;
using Oskan::MemAccount;
using Oskan::MemAccounts;
using Oskan::MemAllocatorFaults;
using Oskan::MemClasses;
using Oskan::MemPool;
using Oskan::MemUsage;
using Oskan::NoSizeMemAllocator;

namespace {

struct Block {
    unsigned char* bytes;
    std::size_t size;
};

Block take(MemAccount& account, std::size_t size) {
    return {static_cast<unsigned char*>(MemPool::allocate(size, account)), size};
}

/** Gives back and takes blocks after the main thread's cache is gone: the run fails if that crashes. */
struct UsesPoolAtExit {
    void* block = nullptr;
    ~UsesPoolAtExit() {
        static constinit MemAccount s_account{"pool.exit"};
        MemPool::deallocate(block, s_account);
        for (const std::size_t size : {16U, 500U, 9000U})
            MemPool::deallocate(MemPool::allocate(size, s_account), s_account);
    }
};
UsesPoolAtExit s_usesPoolAtExit;

std::int64_t liveObjects(const char* name) {
    return MemAccounts::sGetUsage(name).liveObjects;
}

} // namespace

TEST(MemPoolTest, BlocksAreAlignedApartAndLargeEnough) {
    static constinit MemAccount s_account{"pool.sizes"};
    std::vector<Block> blocks;
    // Every size of the pool, so that every step between classes is met from both sides, and sizes beyond.
    for (std::size_t size = 0; size <= MemClasses::kMaxBlock + 64; ++size)
        blocks.push_back(take(s_account, size));
    for (const std::size_t size : {32768U, 65536U, 1000000U})
        blocks.push_back(take(s_account, size));
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(blocks[i].bytes);
        ASSERT_EQ(address % (blocks[i].size % 16 == 0 ? 16 : 8), 0U) << blocks[i].size;
        std::memset(blocks[i].bytes, static_cast<int>(i % 251), blocks[i].size);
    }
    std::int64_t asked = 0;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        asked += static_cast<std::int64_t>(blocks[i].size);
        const auto wrong = std::find_if(blocks[i].bytes, blocks[i].bytes + blocks[i].size,
                                        [i](unsigned char c) { return c != i % 251; });
        ASSERT_EQ(wrong, blocks[i].bytes + blocks[i].size) << "overwritten: " << blocks[i].size;
    }
    const MemUsage usage = MemAccounts::sGetUsage("pool.sizes");
    EXPECT_EQ(usage.liveObjects, static_cast<std::int64_t>(blocks.size()));
    EXPECT_GE(usage.liveBytes, asked);
    EXPECT_LE(usage.liveBytes, asked + asked / 8);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (i % 2)
            MemPool::deallocate(blocks[i].bytes, s_account);
        else
            MemPool::deallocate(blocks[i].bytes, blocks[i].size, s_account);
    }
    EXPECT_EQ(MemAccounts::sGetUsage("pool.sizes").liveObjects, 0);
    EXPECT_EQ(MemAccounts::sGetUsage("pool.sizes").liveBytes, 0);
}

TEST(MemPoolTest, ReusesWhatWasGivenBack) {
    static constinit MemAccount s_account{"pool.reuse"};
    const Block block = take(s_account, 100);
    MemPool::deallocate(block.bytes, 100, s_account);
    EXPECT_EQ(take(s_account, 97).bytes, block.bytes); // Of the same class.
    MemPool::deallocate(block.bytes, s_account);
    // More than a thread keeps for itself, three times over: the surplus must come back to it.
    std::set<unsigned char*> addresses;
    for (int round = 0; round < 3; ++round) {
        std::vector<Block> blocks;
        for (int i = 0; i < 5000; ++i) {
            blocks.push_back(take(s_account, 100));
            addresses.insert(blocks.back().bytes);
        }
        for (const Block& b : blocks)
            MemPool::deallocate(b.bytes, s_account);
    }
    EXPECT_LT(addresses.size(), 5300U);
}

TEST(MemPoolTest, AccountsOfOneNameAreOne) {
    static constinit MemAccount s_one{"pool.shared"};
    static constinit MemAccount s_other{"pool.shared"};
    const Block block = take(s_one, 40);
    EXPECT_EQ(liveObjects("pool.shared"), 1);
    MemPool::deallocate(block.bytes, s_other);
    EXPECT_EQ(liveObjects("pool.shared"), 0);
    EXPECT_EQ(MemAccounts::sGetUsage("pool.share").liveObjects, 0);
    s_usesPoolAtExit.block = take(s_one, 40).bytes;
    const auto list = MemAccounts::sList();
    EXPECT_EQ(std::count_if(list.begin(), list.end(), [](const auto& entry) { return entry.name == "pool.shared"; }),
              1);
}

TEST(MemAllocatorTest, TakesAccountsByNameOrObject) {
    static constinit MemAccount s_account{"allocator.mixed"};
    void* const byName = NoSizeMemAllocator::allocate(24, "allocator.mixed");
    void* const byObject = DefaultStaticMemAllocator::allocate(5000, s_account);
    EXPECT_EQ(liveObjects("allocator.mixed"), 2);
    EXPECT_GE(MemAccounts::sGetUsage("allocator.mixed").liveBytes, 5024);
    DefaultStaticMemAllocator::deallocate(byName, 24, s_account);
    NoSizeMemAllocator::deallocate(byObject, "allocator.mixed");
    NoSizeMemAllocator::deallocate(nullptr, s_account);
    NoSizeMemAllocator::deallocate(nullptr, "allocator.mixed");
    DefaultStaticMemAllocator::deallocate(nullptr, 24, "allocator.mixed");
    EXPECT_EQ(liveObjects("allocator.mixed"), 0);
    EXPECT_EQ(MemAccounts::sGetUsage("allocator.mixed").liveBytes, 0);
}

TEST(MemAllocatorTest, ClassOperatorsFollowTheRealSize) {
    static constinit MemAccount s_account{"allocator.class"};
    struct Base {
        virtual ~Base() = default;
        KX_MEM_ACCOUNT_OPERATORS(s_account);
        char text[20] = {};
    };
    struct Derived : Base {
        char more[300] = {};
    };
    struct Throws : Base {
        Throws() { throw 1; }
    };
    {
        std::unique_ptr<Base> base = std::make_unique<Derived>();
        EXPECT_GE(MemAccounts::sGetUsage("allocator.class").liveBytes, 328);
        EXPECT_THROW(static_cast<void>(new Throws), int);
        EXPECT_EQ(liveObjects("allocator.class"), 1);
    }
    EXPECT_EQ(liveObjects("allocator.class"), 0);
    EXPECT_EQ(MemAccounts::sGetUsage("allocator.class").liveBytes, 0);
    EXPECT_STREQ(Derived::getMemAccountName(), "allocator.class");
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
    EXPECT_FALSE(fails(64));
    MemAllocatorFaults::sFailAfter(3);
    EXPECT_EQ((std::vector<bool>{fails(64), fails(64), fails(64), fails(64)}),
              (std::vector<bool>{false, false, true, false}));
    MemAllocatorFaults::sFailAfter(1);
    EXPECT_TRUE(fails(100000));
    MemAllocatorFaults::sFailAfter(1);
    MemAllocatorFaults::sDisarm();
    EXPECT_FALSE(fails(64));
    EXPECT_TRUE(fails(static_cast<std::size_t>(-1)));
    EXPECT_TRUE(fails(static_cast<std::size_t>(PTRDIFF_MAX)));
    EXPECT_EQ(liveObjects("allocator.faults"), 0);
}

TEST(MemPoolThreadTest, BlocksWanderBetweenThreadsWithoutGrowth) {
    static constinit MemAccount s_account{"pool.wander"};
    constexpr int kRounds = 60;
    std::vector<Block> blocks;
    std::binary_semaphore full{0};
    std::binary_semaphore empty{0};
    std::jthread consumer([&] {
        for (int round = 0; round < kRounds; ++round) {
            full.acquire();
            for (const Block& block : blocks)
                MemPool::deallocate(block.bytes, s_account);
            empty.release();
        }
    });
    std::set<unsigned char*> addresses;
    for (int round = 0; round < kRounds; ++round) {
        blocks.clear();
        for (std::size_t i = 0; i < 1000; ++i) {
            blocks.push_back(take(s_account, 48));
            std::memset(blocks.back().bytes, round, 48);
            addresses.insert(blocks.back().bytes);
        }
        EXPECT_EQ(liveObjects("pool.wander"), 1000);
        full.release();
        empty.acquire();
    }
    EXPECT_EQ(liveObjects("pool.wander"), 0);
    EXPECT_LT(addresses.size(), 2000U);
}

TEST(MemPoolThreadTest, AnEndedThreadLeavesItsCountsAndBlocks) {
    static constinit MemAccount s_account{"pool.ended"};
    std::set<unsigned char*> addresses;
    for (int round = 0; round < 20; ++round) {
        Block kept{};
        std::jthread([&] {
            std::vector<Block> blocks;
            for (int i = 0; i < 300; ++i) {
                blocks.push_back(take(s_account, 1000));
                addresses.insert(blocks.back().bytes);
            }
            for (const Block& block : blocks)
                MemPool::deallocate(block.bytes, s_account);
            kept = take(s_account, 1000);
        }).join();
        EXPECT_EQ(liveObjects("pool.ended"), 1);
        MemPool::deallocate(kept.bytes, s_account);
        EXPECT_EQ(liveObjects("pool.ended"), 0);
    }
    EXPECT_LT(addresses.size(), 700U);
}

TEST(MemPoolThreadTest, ThreadLocalDestructorsMayStillAllocate) {
    static constinit MemAccount s_account{"pool.late"};
    struct Late {
        void* block = nullptr;
        ~Late() {
            MemPool::deallocate(block, s_account);
            for (const std::size_t size : {16U, 500U, 9000U}) {
                void* const another = MemPool::allocate(size, s_account);
                std::memset(another, 1, size);
                MemPool::deallocate(another, s_account);
            }
        }
    };
    for (int round = 0; round < 3; ++round) {
        std::jthread([] {
            thread_local Late late; // Made before the thread's cache, so destroyed after it.
            late.block = MemPool::allocate(200, s_account);
        });
    }
    EXPECT_EQ(liveObjects("pool.late"), 0);
}

TEST(MemPoolThreadTest, ManyThreadsAtOnce) {
    static constinit MemAccount s_account{"pool.many"};
    {
        std::vector<std::jthread> threads;
        for (unsigned t = 0; t < 4; ++t) {
            threads.emplace_back([t] {
                std::vector<Block> held(64);
                unsigned random = t + 1;
                for (int i = 0; i < 20000; ++i) {
                    random = random * 1664525 + 1013904223;
                    Block& slot = held[random >> 26];
                    if (slot.bytes && slot.bytes[slot.size - 1] != static_cast<unsigned char>(slot.size))
                        ADD_FAILURE() << "overwritten";
                    MemPool::deallocate(slot.bytes, s_account);
                    slot = take(s_account, 1 + (random >> 8) % 6000);
                    slot.bytes[slot.size - 1] = static_cast<unsigned char>(slot.size);
                }
                for (const Block& block : held)
                    MemPool::deallocate(block.bytes, s_account);
            });
        }
        for (int i = 0; i < 100; ++i)
            MemAccounts::sList();
    }
    EXPECT_EQ(liveObjects("pool.many"), 0);
    EXPECT_EQ(MemAccounts::sGetUsage("pool.many").liveBytes, 0);
}

#ifndef KX_PLAIN_MALLOC
TEST(MemPoolTest, ResidentMemoryIsThatOfTheBlocks) {
    static constinit MemAccount s_account{"pool.resident"};
    const auto residentBytes = [] {
        std::size_t total = 0;
        std::size_t resident = 0;
        std::ifstream("/proc/self/statm") >> total >> resident;
        return static_cast<std::int64_t>(resident) * sysconf(_SC_PAGESIZE);
    };
    std::vector<Block> blocks(10000 * 7); // Touched before it is measured.
    blocks.clear();
    const std::int64_t before = residentBytes();
    // The pieces of a message of about 3,000 bytes.
    for (int i = 0; i < 10000; ++i) {
        for (const std::size_t size : {1632U, 640U, 320U, 200U, 96U, 64U, 48U}) {
            blocks.push_back(take(s_account, size));
            std::memset(blocks.back().bytes, 1, size);
        }
    }
    const std::int64_t grown = residentBytes() - before;
    const std::int64_t bytes = MemAccounts::sGetUsage("pool.resident").liveBytes;
    EXPECT_LT(grown, bytes + bytes / 50);
    for (const Block& block : blocks)
        MemPool::deallocate(block.bytes, s_account);
}
#endif
