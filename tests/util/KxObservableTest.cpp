#include "util/KxObservable.h"
#include "util/KxObserver.h"

#include "tests/util/Streams.h"

#include <malloc.h>

namespace {

/** Appends its name to `called`. */
struct Observer : KxObserver {
    Observer(char name, std::string& called) : m_name(name), m_called(called) {}

    void onNotification(KxObservable&, const KxHandle<KxObject>&) override {
        m_called += m_name;
        onCall();
    }

    std::function<void()> onCall = [] {};
    char m_name;
    std::string& m_called;
};

} // namespace

TEST(KxObservableTest, CallsEachOnceInOrder) {
    KxObservable subject;
    std::string called;
    Observer a('a', called);
    Observer b('b', called);
    Observer c('c', called);
    const auto notify = [&] {
        called.clear();
        subject.notifyObservers();
        return called;
    };
    EXPECT_TRUE(subject.attachObserver(a) && subject.attachObserver(b) && subject.attachObserver(c));
    EXPECT_FALSE(subject.attachObserver(b));
    EXPECT_EQ(KxObservable(subject).countObservers(), 0U);
    subject.unblock();
    subject.block();
    subject.block();
    subject.unblock();
    EXPECT_EQ(notify(), "");
    subject.unblock();
    a.onCall = [&] { // observers are attached and detached in a notification, and notifications nest
        EXPECT_TRUE(subject.detachObserver(a) && subject.detachObserver(b));
        EXPECT_FALSE(subject.detachObserver(b));
        subject.attachObserver(b); // its place is now the last
        EXPECT_EQ(subject.countObservers(), 2U);
        subject.notifyObservers();
    };
    EXPECT_EQ(notify(), "acbc");
    EXPECT_EQ(notify(), "cb");
    b.onCall = [&] { EXPECT_TRUE(subject.detachObserver(b) && subject.attachObserver(b)); };
    const std::size_t used = mallinfo2().uordblks;
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(notify(), "cb");
    }
    EXPECT_LT(mallinfo2().uordblks, used + 1000) << "the places of those that were detached are kept";
}

TEST(KxObservableThreadTest, DetachedObserverMayBeDestroyed) {
    KxObservable subject;
    std::atomic<bool> stop{false};
    std::jthread notifier([&] {
        while (!stop) {
            subject.notifyObservers();
        }
    });
    for (int i = 0; i < 1000; ++i) {
        std::string called;
        Observer shortLived('x', called);
        subject.attachObserver(shortLived);
        subject.detachObserver(shortLived);
    }
    stop = true;
    notifier.join();
    EXPECT_EQ(subject.countObservers(), 0U);
}
