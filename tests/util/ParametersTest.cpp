#include "tests/util/Streams.h"

#include "core/MemAccount.h"
#include "core/MemAllocatorFaults.h"
#include "util/KxSharedParameters.h"

#include <chrono>
#include <new>

// What a list reads as, and what edits make of it, is compared with a plain list in fuzz/fuzz_parameters.cpp, which the
// test exhaust.parameters runs over every short text.

TEST(ParametersTest, FailingSourcesChangeNothing) {
    constexpr std::string_view kText = "a=1;b=2\r\n ,\";c\r\n,";
    for (std::size_t failAt = 0; failAt < kText.size(); ++failAt) {
        DribblingStream in(kText, 2, failAt % 2 == 0, failAt);
        KxParameters list;
        EXPECT_THROW(list.parse(in), KxHandle<KxException>) << failAt;
        EXPECT_TRUE(list.empty());
        list.parse(in);
        EXPECT_EQ(list.getString(), "a=1;b=2");
        EXPECT_EQ(readRest(in), kText.substr(7));
    }
}

TEST(ParametersTest, AbsentIsNilAndEmptyIsNot) {
    KxParameters list;
    EXPECT_FALSE(list.getString().isNil());
    list.parse("a;b=;c=3");
    EXPECT_TRUE(!list.getValue("A").isNil() && !list.getValue("b").isNil() && list.getValue("d").isNil());
    list.setValue("c", KxString());
    list.setValue("d", *list.findValue("c")); // its own value, while it grows
    list.setValue("e", list.begin()->name);
    list.setValue("C", KxString(""));
    list.getValue("e").append("!"); // a copy's
    EXPECT_EQ(list.getString(), "a;b;c;d=3;e=a");
    EXPECT_EQ(std::prev(list.end(), 2)->name, "d");
    EXPECT_EQ(KxSharedParameters(KxMake<KxParameters>(list)).getString(), list.getString());
}

TEST(ParametersTest, RepeatsFromASlowStreamCostTheirLength) {
    std::string text = "first";
    for (int i = 1; i < 100000; ++i) {
        text += (i % 2 == 0 ? ";p=" : ";P=") + std::to_string(i);
    }
    KxParameters list;
    DribblingStream slow(text, 1);
    list.parse(slow);
    EXPECT_EQ(list.getString(), "first;P=99999");
}

TEST(ParametersTest, StaysWhatItWasWhenThereIsNoMemory) {
    void (*const changes[])(KxParameters&) = {
        [](KxParameters& list) { list.setValue("a new name", KxString("a value")); },
        [](KxParameters& list) {
            list.setValues({{"name0", "another"}, {"nothing", KxString()}, {"a new name", ""}, {"and one more", "1"}});
        },
        [](KxParameters& list) {
            KxParameters other;
            other.parse("a new name;x=1;y=2;z=3");
            list = other;
        },
    };
    for (int size = 0; size <= 40; ++size) {
        for (const auto change : changes) {
            KxParameters list;
            for (int i = 0; i < size; ++i) {
                list.setValue("name" + std::to_string(i), KxString("value"));
                list.setValue("gone" + std::to_string(i / 3), KxString("value"));
            }
            for (int i = 0; i < size; ++i) {
                list.removeValue("gone" + std::to_string(i / 3));
            }
            const KxString before = list.getString();
            KxParameters expected(list);
            change(expected);
            for (std::uint64_t n = 1; !list.isPresent("a new name"); ++n) {
                EXPECT_EQ(list.getString(), before);
                Oskan::MemAllocatorFaults::sFailAfter(n);
                try {
                    change(list);
                } catch (const std::bad_alloc&) {
                }
                Oskan::MemAllocatorFaults::sDisarm();
            }
            EXPECT_EQ(list.getString(), expected.getString());
        }
    }
}

TEST(SharedParametersTest, CopiesShareTheListUntilOneIsChangedOrHandedOut) {
    const std::tuple<const char*, void (*)(KxSharedParameters&), const char*> rows[] = {
        {"write", [](KxSharedParameters& list) { list.write().setValue("a", KxString("2")); }, "a=2;b"},
        {"remove", [](KxSharedParameters& list) { EXPECT_TRUE(list.removeValue("b")); }, "a=1"},
        {"remove what is absent", [](KxSharedParameters& list) { EXPECT_FALSE(list.removeValue("c")); }, "a=1;b"},
        {"clear", [](KxSharedParameters& list) { list.clear(); }, ""},
        {"hand out", [](KxSharedParameters& list) { list.handle()->setValue("c", KxString("3")); }, "a=1;b;c=3"},
    };
    for (const bool isHandedOut : {false, true}) { // a list that was handed out stays the list of its object
        for (const auto& [name, change, changed] : rows) {
            SCOPED_TRACE(name);
            KxSharedParameters original;
            original.write().parse("a=1;b");
            const KxHandle<KxParameters> list = isHandedOut ? original.handle() : nullptr;
            KxSharedParameters copy(original);
            EXPECT_EQ(original.begin() == copy.begin(), !isHandedOut);
            change(copy);
            EXPECT_EQ(copy.getString(), changed);
            EXPECT_EQ(original.getString(), "a=1;b");
            change(original); // no other object holds its list now
            EXPECT_EQ(original.getString(), changed);
            EXPECT_TRUE(!isHandedOut || original.handle() == list);
        }
    }
}

TEST(ThreadSharedParametersTest, ReadersAreHandedOneList) {
    for (int round = 0; round < 2000; ++round) {
        KxSharedParameters source;
        if (round % 2 == 0) { // else the readers make the list
            source.write().parse("a=1");
        }
        const KxSharedParameters copy(source);
        std::array<KxHandle<KxParameters>, 2> lists;
        std::atomic<int> ready{0};
        const auto read = [&, &source = std::as_const(source)](KxHandle<KxParameters>& list) {
            for (++ready; ready < 2;) {
                std::this_thread::yield();
            }
            list = source.handle();
            EXPECT_EQ(source.getValue("a"), round % 2 == 0 ? "1" : "");
        };
        std::thread other(read, std::ref(lists[0]));
        read(lists[1]);
        other.join();
        EXPECT_EQ(lists[0], lists[1]);
        lists[0]->setValue("a", KxString("2"));
        EXPECT_EQ(source.getString(), "a=2");
        EXPECT_EQ(copy.getString(), round % 2 == 0 ? "a=1" : "");
    }
}

TEST(ThreadSharedParametersTest, NoCopySharesWhatIsHandedOutMeanwhile) {
    constexpr std::size_t kRounds = 20000;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3); // if two threads share a processor
    std::vector<KxSharedParameters> sources(kRounds);
    std::vector<KxHandle<KxParameters>> lists(kRounds);
    for (KxSharedParameters& source : sources) {
        source.write().parse("a=1");
    }
    std::atomic<std::size_t> copied{0};
    std::atomic<std::size_t> handedOut{0};
    std::thread lender([&] {
        for (std::size_t i = 0; i < kRounds; handedOut = ++i) {
            while (copied <= i) {
                std::this_thread::yield();
            }
            for (std::size_t skew = copied; skew % 16 != 0; ++skew) {
                static_cast<void>(copied.load());
            }
            lists[i] = sources[i].handle();
        }
    });
    std::size_t shared = 0;
    for (std::size_t i = 0; i < kRounds && shared == 0 && std::chrono::steady_clock::now() < end; ++i) {
        for (bool isHandedOut = false; !isHandedOut;) { // copies without a pause
            const KxSharedParameters copy(sources[i]);
            copied = i + 1;
            for (std::size_t wait = i % 2 * 16; wait > 0; --wait) {
                static_cast<void>(handedOut.load());
            }
            isHandedOut = handedOut > i;
            shared += isHandedOut && copy.begin() == lists[i]->begin() ? 1 : 0;
        }
    }
    copied = kRounds;
    lender.join();
    EXPECT_EQ(shared, 0U);
}
