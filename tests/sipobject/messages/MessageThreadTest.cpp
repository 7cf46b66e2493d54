#include "core/GlobalConfig.h"
#include "core/Logger.h"
#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <future>
#include <iostream>
#include <mutex>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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

/** The library's loggers at changing levels, with an appender that counts what they log. */
class ChangingLog {
public:
    ChangingLog() {
        m_logger.setAdditivity(false);
        m_logger.addAppender(log4cplus::SharedAppenderPtr(
            new FunctionAppender([this](const LogRecord& record) { m_read += record.text.size(); })));
    }
    ~ChangingLog() { log4cplus::Logger::getDefaultHierarchy().resetConfiguration(); }
    ChangingLog(const ChangingLog&) = delete;
    ChangingLog& operator=(const ChangingLog&) = delete;

    void change(std::size_t turn) {
        constexpr std::array kLevels{log4cplus::WARN_LOG_LEVEL, log4cplus::TRACE_LOG_LEVEL, log4cplus::INFO_LOG_LEVEL,
                                     log4cplus::OFF_LOG_LEVEL, log4cplus::DEBUG_LOG_LEVEL};
        m_logger.setLogLevel(kLevels[turn % kLevels.size()]);
    }
    std::size_t read() const { return m_read; }

private:
    log4cplus::Logger m_logger = log4cplus::Logger::getInstance("tandril");
    std::atomic<std::size_t> m_read{0};
};

/** A message that all threads read, and what each of them must get from it. */
struct Constant {
    explicit Constant(const KxHandle<KxSipMessage>& read)
        : message(read), text(written(*read)), key(read->createKey()), response(derivedText(read, "response 200")) {}

    void look() const {
        EXPECT_EQ(written(*message), text);
        EXPECT_EQ(message->createKey(), key);
        EXPECT_EQ(derivedText(message, "response 200"), response);
        EXPECT_FALSE(message->getHeader("Via").isNil());
    }
    void edit() const {
        const KxHandle<KxSipMessage> copy = copyOf(*message);
        copy->addHeader(numbered(0, 0), true);
        copy->getToHeader()->setTag("another");
        copy->setBody("v=0\r\n", "application/sdp");
        copy->removeHeader("Accept");
        EXPECT_TRUE(copy->removeHeader("Via"));
        EXPECT_NE(written(*copy), text);
    }

    const KxHandle<KxSipMessage> message;
    const std::string text;
    const KxString key;
    const std::string response;
};

/** While it is copied, another thread tries to change its message. */
class Intruder final : public KxSipHeader {
public:
    explicit Intruder(KxSipMessage& message)
        : KxSipHeader(KxString("X-Intruder"), KxHeaderIDs::kUnknown), m_message(message) {}

    const KxString& getExpandedToken() const override { return getToken(); }
    KxObject* clone() const override {
        change = std::async(std::launch::async, [this] { m_message.addHeader(numbered(0, 0), false); });
        cameIn = change.wait_for(std::chrono::milliseconds(50)) == std::future_status::ready;
        return new KxSipUnknownHeader("X-Intruder", "");
    }

    mutable std::future<void> change;
    mutable bool cameIn = false;

protected:
    void doParse(KxInputStream&) override {}
    void doSerialize(KxOutputStream&) const override {}

private:
    KxSipMessage& m_message;
};

} // namespace

TEST(MessageThreadTest, OneMessageLosesNoHeader) {
    const Balance balance;
    const KxHandle<KxSipMessage> message = readMessage(fileText(KX_SOURCE_DIR "/samples/carrier_invite.sip"));
    const std::string original = written(*message);
    onAllThreads([&message](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            const KxHandle<KxSipHeader> added = numbered(thread, round);
            message->addHeader(added, round % 2 == 0);
            EXPECT_EQ(message->getHeader(added->getToken()), added);
            message->addSingleHeader(numbered(thread, round + kRounds), false);
        }
    });
    for (int i = 0; i < kThreads * 2 * kRounds; ++i) {
        EXPECT_TRUE(message->removeHeader(numbered(i % kThreads, i / kThreads)->getToken())) << i;
    }
    EXPECT_EQ(written(*message), original);
}

TEST(MessageThreadTest, NothingChangesWhileAMessageIsCopied) {
    const KxHandle<KxSipMessage> message = readMessage(fileText(KX_SOURCE_DIR "/samples/invite.sip"));
    const auto intruder = KxMake<Intruder>(*message);
    message->addHeader(intruder, false);
    const KxHandle<KxSipMessage> copy = copyOf(*message);
    intruder->change.get();
    EXPECT_FALSE(intruder->cameIn);
    EXPECT_NE(copy->removeHeader("X-0-0"), message->removeHeader("X-0-0"));
}

namespace {

/** An operation that threads may call on one message at the same time, as the guide says. */
struct SharedOperation {
    const char* name;
    std::function<void(KxSipMessage&)> call;
};

const std::vector<SharedOperation>& sharedOperations() {
    static const auto startLine = [](KxSipMessage& message) {
        if (auto* const request = dynamic_cast<KxSipRequest*>(&message)) {
            request->setURI(KxHandle<KxURI>(new KxSipURL("sip:other@h;lr;x=y")));
        } else {
            dynamic_cast<KxSipResponse&>(message).setReasonPhrase("a phrase that is longer than a word");
        }
    };
    static const std::vector<SharedOperation> all{
        {"addHeader", [](KxSipMessage& m) { m.addHeader(readHeader("Via: SIP/2.0/UDP a, SIP/2.0/UDP b"), true); }},
        {"addHeader unknown", [](KxSipMessage& m) { m.addHeader(readHeader("X-Own: 1"), false); }},
        {"addSingleHeader", [](KxSipMessage& m) { m.addSingleHeader(readHeader("Supported: a"), false); }},
        {"removeHeader", [](KxSipMessage& m) { m.removeHeader("Via"); }},
        {"removeHeader unknown", [](KxSipMessage& m) { m.removeHeader("x-own"); }},
        {"getHeader", [](KxSipMessage& m) { static_cast<void>(m.getHeader("X-Own")); }},
        {"getHeaderOrder", [](KxSipMessage& m) { static_cast<void>(m.getHeaderOrder()); }},
        {"isSupported", [](KxSipMessage& m) { static_cast<void>(m.isSupported("a") || m.isRequired("b")); }},
        {"setBody", [](KxSipMessage& m) { m.setBody("v=0\r\n", "application/sdp"); }},
        {"start line", startLine},
        {"serialize", [](KxSipMessage& m) { static_cast<void>(written(m)); }},
        {"clone", [](KxSipMessage& m) { EXPECT_TRUE(copyOf(m)->getHeader("X-Own 2").isNil()); }},
        {"createKey", [](KxSipMessage& m) { static_cast<void>(m.createKey()); }},
        {"<<", [](KxSipMessage& m) { static_cast<void>(std::ostringstream() << m); }},
        {"logMessage",
         [](KxSipMessage& m) {
             Oskan::Logger logger("tandril.host");
             m.logMessage(logger, true, nullptr, nullptr, Oskan::LogLevel::Info);
         }},
    };
    return all;
}

} // namespace

/** Runs each pair of operations at the same time, on a request and on a response. */
TEST(MessageThreadTest, PairsOfOperationsOnOneMessage) {
    const Balance balance;
    ChangingLog log;
    log.change(2); // what logMessage writes is read
    const std::vector<SharedOperation>& all = sharedOperations();
    const std::string invite = fileText(KX_SOURCE_DIR "/samples/invite.sip");
    for (const std::string& text : {invite, derivedText(readMessage(invite), "response 200")}) {
        for (std::size_t a = 0; a < all.size(); ++a) {
            for (std::size_t b = a; b < all.size(); ++b) {
                const KxHandle<KxSipMessage> message = readMessage(text);
                std::atomic<int> ready{0};
                const auto run = [&ready, &message](const SharedOperation& operation) {
                    for (++ready; ready != 2;) {
                    }
                    for (int round = 0; round < 20; ++round) {
                        operation.call(*message);
                    }
                };
                std::thread other(run, std::cref(all[b]));
                run(all[a]);
                other.join();
                EXPECT_EQ(outcomeOf([&] { return written(*copyOf(*message)); }), written(*message))
                    << all[a].name << " and " << all[b].name;
            }
        }
    }
}

/** No appender runs under a message's lock, so an appender may call the message that is logged. */
TEST(MessageThreadTest, AppendersMayAskTheMessage) {
    const KxHandle<KxSipMessage> message = readMessage(fileText(KX_SOURCE_DIR "/samples/carrier_invite.sip"));
    std::size_t asked = 0;
    bool isAsking = false;
    log4cplus::Logger logger = log4cplus::Logger::getInstance("tandril");
    logger.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    logger.addAppender(log4cplus::SharedAppenderPtr(new FunctionAppender([&](const LogRecord&) {
        if (!std::exchange(isAsking, true)) {
            asked += written(*message).size() + message->getHeaderOrder().size();
            message->removeHeader("X-None");
            isAsking = false;
        }
    })));
    std::mutex mutex;
    std::condition_variable ended;
    bool isDone = false;
    std::thread watch([&] { // ends a test that would wait for ever
        std::unique_lock lock(mutex);
        if (!ended.wait_for(lock, std::chrono::seconds(120), [&] { return isDone; })) {
            std::cerr << "an appender waits for the message's lock\n";
            std::abort();
        }
    });
    for (const SharedOperation& operation : sharedOperations()) {
        const std::size_t before = asked;
        operation.call(*message);
        EXPECT_GT(asked, before) << operation.name;
    }
    message->addHeader(message->getHeader("From"), false); // twice
    {
        const std::lock_guard lock(mutex);
        isDone = true;
    }
    ended.notify_one();
    watch.join();
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
}

/** Reads, writes, derives and edits copies while log levels and configuration change, for KX_SOAK_SECONDS. */
TEST(MessageThreadTest, Soak) {
    const char* const told = std::getenv("KX_SOAK_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(told == nullptr ? 1 : std::atoi(told));
    const Balance balance;
    ChangingLog log;
    std::vector<Constant> constants;
    for (const std::string& text : messagesOf("samples")) {
        constants.emplace_back(readMessage(text));
    }
    constants.emplace_back(
        readMessage("OPTIONS sip:h SIP/2.0\r\nMax-Forwards: 0\r\n" + requiredHeaders("OPTIONS") + "\r\n"));
    const KxHandle<KxSipRequest> exhausted = as<KxSipRequest>(constants.back().message);
    std::atomic<std::size_t> rounds{0};
    std::atomic<std::size_t> refused{0};
    onAllThreads([&](int thread) {
        Oskan::Logger logger("tandril.host");
        for (std::size_t round = 0; std::chrono::steady_clock::now() < end; ++round, ++rounds) {
            const Constant& shared = constants[(round + static_cast<std::size_t>(thread)) % constants.size()];
            shared.look();
            shared.edit();
            EXPECT_EQ(written(*readMessage(shared.text)), shared.text);
            shared.message->logMessage(logger, round % 2 == 0, nullptr, nullptr, Oskan::LogLevel::Info);
            refused += exhausted->tooManyHops() ? 1 : 0;
            if (thread == 0) {
                log.change(round);
            } else if (thread == 1) {
                Oskan::GlobalConfig::getInstance().set("tandril.sip.ignoreMaxForwards", round % 3 == 0 ? "true" : "no");
            }
        }
    });
    Oskan::GlobalConfig::getInstance().unset("tandril.sip.ignoreMaxForwards");
    std::cout << rounds << " rounds, " << refused << " refused, " << log.read() << " characters logged\n";
    EXPECT_GT(refused, 0U);
    EXPECT_LT(refused, rounds);
    EXPECT_GT(log.read(), 0U);
}

#ifndef KX_PLAIN_MALLOC // the sanitizers have locks of their own, which may be held in the child
/** A forked child has one thread; locks that other threads held at the fork must not block it. */
TEST(MessageThreadTest, AForkedChildWorksWhateverOtherThreadsDo) {
    const std::string text = fileText(KX_SOURCE_DIR "/samples/carrier_invite.sip");
    const auto work = [&text](int count) {
        std::vector<KxHandle<KxSipMessage>> held;
        for (int i = 0; i < count; ++i) {
            held.push_back(readMessage(text));
            held.push_back(copyOf(*held.back()));
            held.back()->getViaHeader()->getParameters()->setValue("x", KxString(std::string(70U * (i % 40U), 'v')));
        }
        return held.back()->createKey() == held.front()->createKey();
    };
    std::atomic<bool> ended = false;
    std::array<std::thread, 3> threads;
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int round = 0; !ended; ++round) {
                std::thread(work, 20 + round % 50).join(); // its end gives blocks back
                work(50);
            }
        });
    }
    int hung = 0;
    for (int i = 0; i < 300; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            _exit(work(10) ? 0 : 1);
        }
        int status = 0;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        pid_t waited = 0;
        while ((waited = waitpid(child, &status, WNOHANG)) == 0 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        if (waited == 0) {
            ++hung;
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
        } else {
            EXPECT_EQ(status, 0);
        }
    }
    EXPECT_EQ(hung, 0);
    ended = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
}
#endif
