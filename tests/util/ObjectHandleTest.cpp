#include "tests/util/Streams.h"
#include "util/KxByteArray.h"
#include "util/KxHandle.h"
#include "util/KxParameters.h"

namespace {

/** Calls a function in its destructor. */
class Probe : public KxObject {
public:
    explicit Probe(std::function<void()> farewell) : m_farewell(std::move(farewell)) {}
    Probe(const Probe&) = default;
    ~Probe() override { m_farewell(); }
    Probe* clone() const override { return new Probe(*this); }

private:
    std::function<void()> m_farewell;
};

} // namespace

TEST(HandleTest, CopyIsDeepAndOfTheSameType) {
    const auto list = KxMake<KxParameters>();
    list->setValue("a", KxString("1"));
    const KxHandle<KxParameters> copy = KxCopy(list);
    list->clear();
    EXPECT_EQ(copy->getString(), "a=1");
    EXPECT_TRUE(copy->isUnshared());
    EXPECT_TRUE(KxCopy(KxHandle<KxParameters>()).isNil());
}

TEST(HandleTest, LastHandleFreesHoweverHandlesWerePassedOn) {
    bool gone = false;
    KxHandle<Probe> first(new Probe([&] { gone = true; }));
    Probe* const object = first.get();
    KxHandle<KxObject> second(first);
    EXPECT_EQ(KxHandleCast<Probe>(second), first);
    EXPECT_TRUE(KxHandleCast<KxParameters>(second).isNil());
    EXPECT_FALSE(object->isUnshared());
    second = std::move(first);
    second = static_cast<const KxHandle<KxObject>&>(second);
    second = std::move(static_cast<KxHandle<KxObject>&>(second));
    EXPECT_TRUE(object->isUnshared());
    EXPECT_EQ(second.detach(), object);
    first = KxHandle<Probe>(object);
    EXPECT_EQ(object->Release(true), 1U);  // the reference that detach left
    EXPECT_EQ(object->Release(false), 0U); // no reference, as after new
    EXPECT_EQ(first.detach(), object);
    first = KxHandle<Probe>(object);
    EXPECT_FALSE(gone);
    first = nullptr;
    EXPECT_TRUE(gone);
}

TEST(HandleTest, CompanionsOutliveTheirObjectAndLeaveItsCountAlone) {
    std::string gone;
    const auto companion = [&] { return new Probe([&] { gone += "2"; }); };
    KxHandle<Probe> held;
    Probe* const object = new Probe([&] {
        const KxHandle<Probe> toItself(object); // must not destroy it again
        gone += held.isNil() ? "1" : "-";
    });
    held = KxHandle<Probe>(object, companion());
    static_cast<void>(KxHandle<Probe>(object, companion()));
    static_cast<void>(KxHandle<Probe>(object, nullptr));
    EXPECT_TRUE(KxHandle<Probe>(nullptr, object).isNil());
    EXPECT_TRUE(object->isUnshared());
    EXPECT_EQ(gone, "");
    held = nullptr;
    EXPECT_EQ(gone, "122");
}

TEST(HandleDeathTest, NilCannotBeDereferenced) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the logging library has threads
    const KxHandle<KxParameters> nil;
    EXPECT_DEATH(static_cast<void>(nil->size()),
                 "Assertion failed: pObj!=0, T = KxParameters, called from .*kxutil_tests\\+0x[0-9a-f]+");
}

TEST(CloneTest, IsFreshEqualAndOnItsOwn) {
    const auto text = KxStringBuffer::sCreate("text", 4);
    const auto bytes = KxByteArray::sCreate("bytes");
    const auto list = KxMake<KxParameters>();
    list->parse("a=1;b=2;c=3");
    const auto expectCloned = [](KxObject* original, auto change) {
        const KxHandle<KxObject> copy(original->clone());
        EXPECT_TRUE(copy->isUnshared());
        EXPECT_EQ(copy->compareWith(*original), 0);
        EXPECT_EQ(copy->hashCode(), original->hashCode());
        change();
        EXPECT_LT(copy->compareWith(*original), 0);
    };
    expectCloned(text.get(), [&] { text->append("!", 1); });
    expectCloned(bytes.get(), [&] { (*bytes)[0] = 0xFF; });
    expectCloned(list.get(), [&] { list->setValue("a", KxString("2")); });
}

TEST(ThreadHandleTest, FourThreadsShareAndLetGoTogether) {
    constexpr int kObjects = 400;
    std::atomic<int> freed = 0;
    std::vector<KxHandle<Probe>> handles;
    const auto probe = [&] { return new Probe([&] { ++freed; }); };
    for (int i = 0; i < kObjects; ++i) {
        handles.emplace_back(probe(), i % 2 == 0 ? nullptr : probe());
    }
    std::atomic<int> ready = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&ready, mine = handles]() mutable {
            for (++ready; ready < 5;) {
                std::this_thread::yield();
            }
            for (KxHandle<Probe>& handle : mine) {
                for (int n = 0; n < 20; ++n) {
                    handle = KxHandle<Probe>(std::as_const(handle));
                }
                handle = nullptr;
            }
        });
    }
    handles.clear();
    EXPECT_EQ(freed, 0);
    ++ready;
    threads.clear();
    EXPECT_EQ(freed, kObjects + kObjects / 2);
}
