#include "sipobject/headers/KxSipUnknownHeader.h"
#include "sipobject/messages/KxSipMessage.h"
#include "tests/sipobject/support/MessageSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <mutex>
#include <thread>

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 300;

KxHandle<KxSipHeader> numbered(int thread, int round) {
    const std::string name = "X-" + std::to_string(thread) + '-' + std::to_string(round);
    return KxHandle<KxSipHeader>(new KxSipUnknownHeader(name.c_str(), "1"));
}

/** Runs work(thread) on all threads at once. */
template <class Work>
void onAllThreads(Work work) {
    std::array<std::thread, kThreads> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads[static_cast<std::size_t>(i)] = std::thread([work, i] { work(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/** A few places where threads leave messages for each other. */
class Exchange {
public:
    KxHandle<KxSipMessage> swap(std::size_t place, KxHandle<KxSipMessage> mine) {
        const std::lock_guard lock(m_mutex);
        m_places[place % m_places.size()].swap(mine);
        return mine;
    }

private:
    std::mutex m_mutex;
    std::array<KxHandle<KxSipMessage>, 3> m_places;
};

} // namespace

TEST(MessageThreadTest, OneMessageLosesNoHeader) {
    const Balance balance;
    const KxHandle<KxSipMessage> message = readMessage(fileText(KX_SOURCE_DIR "/samples/carrier_invite.sip"));
    const std::string original = headersOf(*message);
    onAllThreads([&message](int thread) {
        const KxHandle<KxSipMessage> mine(message);
        for (int round = 0; round < kRounds; ++round) {
            const KxHandle<KxSipHeader> added = numbered(thread, round);
            mine->addHeader(added, round % 2 == 0);
            EXPECT_EQ(mine->getHeader(added->getToken()), added);
            mine->addSingleHeader(numbered(thread, round + kRounds), false);
            if (round % 3 != 0) {
                EXPECT_TRUE(mine->removeHeader(added->getToken()));
            }
            if (round % 16 == thread) {
                const KxHandle<KxSipMessage> copy(static_cast<KxSipMessage*>(mine->clone()));
                EXPECT_FALSE(copy->getHeader("User-Agent").isNil());
                mine->setBody("v=0\r\n", "application/sdp");
                EXPECT_NE(written(*mine).find("\r\n\r\nv="), std::string::npos);
                EXPECT_TRUE(mine->isSupported("timer"));
            }
        }
    });
    for (int thread = 0; thread < kThreads; ++thread) {
        for (int round = 0; round < 2 * kRounds; ++round) {
            const bool kept = round >= kRounds || round % 3 == 0;
            EXPECT_EQ(message->removeHeader(numbered(thread, round)->getToken()), kept) << thread << ' ' << round;
        }
    }
    message->setBody("", "", 0);
    const std::size_t length = original.find("Content-Length: ");
    EXPECT_EQ(headersOf(*message).substr(0, length), original.substr(0, length));
}

TEST(MessageThreadTest, MessagesPassFromThreadToThread) {
    const Balance balance;
    std::vector<std::string> inputs;
    for (const std::filesystem::path& path : filesOf("tests/messages", ".sip")) {
        inputs.push_back(fileText(path));
    }
    std::vector<std::string> expected;
    for (const std::string& input : inputs) {
        DribblingStream in(input, 4096);
        expected.push_back(outcomeOf([&in] { return written(*KxSipMessage::sConstructFrom(in)); }));
    }
    onAllThreads([&](int thread) {
        static Exchange exchange;
        for (int round = 0; round < kRounds; ++round) {
            const std::size_t which = static_cast<std::size_t>(round * kThreads + thread) % inputs.size();
            KxHandle<KxSipMessage> message;
            const std::string outcome = outcomeOf([&] {
                message = readMessage(inputs[which]);
                return written(*message);
            });
            EXPECT_EQ(outcome, expected[which]);
            if (message.isNil()) {
                continue;
            }
            const KxHandle<KxSipMessage> shared(message);
            KxHandle<KxSipMessage> other = exchange.swap(which, std::move(message));
            if (!other.isNil()) {
                const KxHandle<KxSipMessage> copy(static_cast<KxSipMessage*>(other->clone()));
                EXPECT_EQ(written(*copy), written(*other));
                copy->removeHeader("Via");
                static_cast<void>(copy->getHeader("From"));
            }
            EXPECT_EQ(written(*shared), expected[which]);
        }
        for (std::size_t place = 0; place < 3; ++place) {
            exchange.swap(place, {});
        }
    });
}
