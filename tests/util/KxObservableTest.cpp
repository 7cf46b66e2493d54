#include "util/KxObservable.h"
#include "util/KxException.h"
#include "util/KxObserver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using testing::ElementsAre;

namespace {

class Observer : public KxObserver {
public:
    Observer(std::string name, std::vector<std::string>& called) : m_name(std::move(name)), m_called(called) {}

    void onNotification(KxObservable&, const KxHandle<KxObject>&) override {
        m_called.push_back(m_name);
        if (onCall) {
            onCall();
        }
    }

    std::function<void()> onCall;

private:
    std::string m_name;
    std::vector<std::string>& m_called;
};

class KxObservableTest : public testing::Test {
protected:
    std::vector<std::string> notify() {
        m_called.clear();
        m_subject.notifyObservers();
        return m_called;
    }

    KxObservable m_subject;
    std::vector<std::string> m_called;
    Observer m_a{"a", m_called};
    Observer m_b{"b", m_called};
    Observer m_c{"c", m_called};
};

} // namespace

TEST_F(KxObservableTest, CallsEachOnceInOrder) {
    EXPECT_TRUE(m_subject.attachObserver(m_b));
    EXPECT_TRUE(m_subject.attachObserver(m_a));
    EXPECT_FALSE(m_subject.attachObserver(m_b));
    EXPECT_THAT(notify(), ElementsAre("b", "a"));
    EXPECT_TRUE(m_subject.detachObserver(m_b));
    EXPECT_FALSE(m_subject.detachObserver(m_b));
    EXPECT_THAT(notify(), ElementsAre("a"));
    const KxObservable copy(m_subject);
    EXPECT_EQ(copy.countObservers(), 0U);
}

TEST_F(KxObservableTest, ObserversComeAndGoDuringANotification) {
    m_subject.attachObserver(m_a);
    m_subject.attachObserver(m_b);
    m_a.onCall = [&] {
        m_subject.detachObserver(m_a);
        m_subject.detachObserver(m_b);
        m_subject.attachObserver(m_c);
        m_subject.attachObserver(m_b); // its place is now behind c
        EXPECT_EQ(m_subject.countObservers(), 2U);
    };
    EXPECT_THAT(notify(), ElementsAre("a"));
    EXPECT_THAT(notify(), ElementsAre("c", "b"));
}

TEST_F(KxObservableTest, NotificationsNest) {
    m_subject.attachObserver(m_a);
    m_subject.attachObserver(m_b);
    m_a.onCall = [&] {
        m_a.onCall = nullptr;
        m_subject.notifyObservers();
        m_subject.detachObserver(m_a);
    };
    EXPECT_THAT(notify(), ElementsAre("a", "a", "b", "b"));
    EXPECT_THAT(notify(), ElementsAre("b"));
}

TEST_F(KxObservableTest, BlocksAreCounted) {
    m_subject.attachObserver(m_a);
    m_subject.unblock();
    m_subject.block();
    m_subject.block();
    m_subject.unblock();
    EXPECT_THAT(notify(), ElementsAre());
    m_subject.unblock();
    EXPECT_THAT(notify(), ElementsAre("a"));
}

TEST_F(KxObservableTest, ThrowingObserverLeavesItUsable) {
    m_subject.attachObserver(m_a);
    m_subject.attachObserver(m_b);
    m_a.onCall = [&] {
        m_subject.detachObserver(m_a);
        KxException::sThrow("no");
    };
    EXPECT_THROW(m_subject.notifyObservers(), KxHandle<KxException>);
    EXPECT_THAT(notify(), ElementsAre("b"));
}

TEST(KxObservableThreadTest, DetachedObserverMayBeDestroyed) {
    KxObservable subject;
    std::atomic<bool> stop{false};
    std::thread notifier([&] {
        while (!stop) {
            subject.notifyObservers();
        }
    });
    for (int i = 0; i < 1000; ++i) {
        std::vector<std::string> called;
        Observer shortLived("x", called);
        subject.attachObserver(shortLived);
        subject.detachObserver(shortLived);
    }
    stop = true;
    notifier.join();
    EXPECT_EQ(subject.countObservers(), 0U);
}
