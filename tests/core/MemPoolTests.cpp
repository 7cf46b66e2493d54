#include "core/MemAllocator.h"
#include "core/MemPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
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

/** Gives back and takes blocks after its thread's cache is gone: the run fails if that crashes. */
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
    // Every size of the pool, so that every step between classes is met from both sides, and sizes beyond.
    for (std::size_t size = 0; size <= MemClasses::kMaxBlock + 64; ++size)
        blocks.push_back(take(s_account, size));
    blocks.push_back(take(s_account, 1000000));
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
        if (size % 2)
            MemPool::deallocate(bytes, s_account);
        else
            MemPool::deallocate(bytes, size, s_account);
    }
    EXPECT_EQ(liveObjects("pool.sizes"), 0);
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
    const auto list = MemAccounts::sList();
    EXPECT_EQ(std::count_if(list.begin(), list.end(), [](const auto& each) { return each.name == "allocator.mixed"; }),
              1);
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
                for (; blocks.size() > 500; blocks.pop_back())
                    MemPool::deallocate(blocks.back().bytes, s_account);
            }).join();
            EXPECT_EQ(liveObjects("pool.ended"), 500);
            for (const Block& block : blocks)
                MemPool::deallocate(block.bytes, s_account);
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
