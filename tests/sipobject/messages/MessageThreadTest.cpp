#include "core/GlobalConfig.h"
#include "core/Logger.h"
#include "tests/sipobject/support/Operations.h"

#include <chrono>
#include <csignal>
#include <future>
#include <iostream>
#include <sys/wait.h>
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
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([work, i] { work(i); });
    }
}

/** The library's loggers at changing levels, with an appender that counts the characters that they log. */
struct ChangingLog : LogCapture {
    ChangingLog()
        : LogCapture(log4cplus::Logger::getInstance("tandril"),
                     [this](const LogRecord& record) { read += record.text.size(); }) {
        log4cplus::Logger::getInstance("tandril").setAdditivity(false);
    }
    void change(std::size_t turn) {
        constexpr std::array kLevels{log4cplus::WARN_LOG_LEVEL, log4cplus::TRACE_LOG_LEVEL, log4cplus::INFO_LOG_LEVEL,
                                     log4cplus::OFF_LOG_LEVEL, log4cplus::DEBUG_LOG_LEVEL};
        log4cplus::Logger::getInstance("tandril").setLogLevel(kLevels[turn % kLevels.size()]);
    }
    std::atomic<std::size_t> read{0};
};

/** A message that all threads read, and what they must get from it and from copies of it. */
struct Constant {
    explicit Constant(const Message& read)
        : message(read), text(written(*read)), key(read->createKey()), response(derivedText(read, "response 200")) {
        for (const std::vector<Operation>& operations : {kSharedOperations, kOtherOperations}) {
            for (const Operation& operation : operations) {
                outcomes.emplace_back(operation, outcomeOn(copyOf(*message), operation));
            }
        }
    }
    static std::string outcomeOn(const Message& copy, const Operation& operation) {
        return outcomeOf([&] { return textOf(operation.run(copy)); }) + written(*copy);
    }
    void look(std::size_t round) const {
        const auto& [operation, outcome] = outcomes[round % outcomes.size()];
        EXPECT_EQ(outcomeOn(copyOf(*message), operation), outcome) << operation.name;
        EXPECT_EQ(written(*message), text);
        EXPECT_EQ(written(*readMessage(text)), text);
        EXPECT_EQ(message->createKey(), key);
        EXPECT_EQ(derivedText(message, "response 200"), response);
    }

    const Message message;
    const std::string text;
    const KxString key;
    const std::string response;
    std::vector<std::pair<Operation, std::string>> outcomes;
};

/** Every operation that may be called on one message at the same time, logging included. */
std::vector<Operation> sharedOperations() {
    std::vector<Operation> all = kSharedOperations;
    all.emplace_back("<<", [](const Message& m) { static_cast<void>(std::ostringstream() << *m); });
    all.emplace_back("logMessage", [](const Message& m) {
        Oskan::Logger logger("tandril.host");
        m->logMessage(logger, true, nullptr, nullptr, Oskan::LogLevel::Info);
    });
    return all;
}

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
    KxMutex::sRecycle(nullptr);
    const Message message = readMessage(fileText(KX_SOURCE_DIR "/samples/carrier_invite.sip"));
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
    const Message message = readMessage(fileText(KX_SOURCE_DIR "/samples/invite.sip"));
    const auto intruder = KxMake<Intruder>(*message);
    message->addHeader(intruder, false);
    const Message copy = copyOf(*message);
    intruder->change.get();
    EXPECT_FALSE(intruder->cameIn);
    EXPECT_NE(copy->removeHeader("X-0-0"), message->removeHeader("X-0-0"));
}

/** Runs each pair of operations at the same time, on a request and on a response. */
TEST(MessageThreadTest, PairsOfOperationsOnOneMessage) {
    const Balance balance;
    ChangingLog log;
    log.change(2); // level INFO, at which logMessage writes
    const std::vector<Operation> all = sharedOperations();
    const std::string invite = fileText(KX_SOURCE_DIR "/samples/invite.sip");
    for (const std::string& text : {invite, derivedText(readMessage(invite), "response 200")}) {
        for (std::size_t a = 0; a < all.size(); ++a) {
            for (std::size_t b = a; b < all.size(); ++b) {
                const Message message = readMessage(text);
                std::atomic<int> ready{0};
                const auto run = [&ready, &message](const Operation& operation) {
                    for (++ready; ready != 2;) {
                    }
                    for (int round = 0; round < 20; ++round) {
                        operation.run(message);
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

/** No appender runs under a message's lock, so an appender may call the message that is logged. What it throws reaches
    nobody. */
TEST(MessageThreadTest, AppendersMayAskTheMessageAndThrow) {
    const Message message = readMessage(fileText(KX_SOURCE_DIR "/samples/carrier_invite.sip"));
    std::size_t asked = 0;
    bool isAsking = false;
    log4cplus::Logger logger = log4cplus::Logger::getInstance("tandril");
    logger.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    const LogCapture capture(logger, [&](const LogRecord&) {
        if (!std::exchange(isAsking, true)) {
            asked += written(*message).size() + message->getHeaderOrder().size();
            message->removeHeader("X-None");
            isAsking = false;
            throw std::runtime_error("disk full");
        }
    });
    std::promise<void> done;
    std::jthread watch([ended = done.get_future()] { // aborts a test that does not end
        if (ended.wait_for(std::chrono::seconds(120)) != std::future_status::ready) {
            std::cerr << "an appender waits for the message's lock\n";
            std::abort();
        }
    });
    for (const Operation& operation : sharedOperations()) {
        const std::size_t before = asked;
        EXPECT_NO_THROW(operation.run(message)) << operation.name;
        EXPECT_GT(asked, before) << operation.name;
    }
    message->addHeader(message->getHeader("From"), false); // twice
    done.set_value();
}

/** Reads, writes, derives and edits copies while log levels and configuration change, for KX_SOAK_SECONDS. */
TEST(MessageThreadTest, Soak) {
    const char* const given = std::getenv("KX_SOAK_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(given == nullptr ? 1 : std::atoi(given));
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
            shared.look(round);
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
    std::cout << rounds << " rounds, " << refused << " refused, " << log.read << " characters logged\n";
    EXPECT_GT(refused, 0U);
    EXPECT_LT(refused, rounds);
    EXPECT_GT(log.read, 0U);
}

#ifndef KX_PLAIN_MALLOC // the sanitizers have locks too, which may be held in the child
/** A forked child has one thread; locks that other threads held at the fork must not block it. */
TEST(MessageThreadTest, AForkedChildWorksWhateverOtherThreadsDo) {
    const std::string text = fileText(KX_SOURCE_DIR "/samples/carrier_invite.sip");
    const auto work = [&text](int count) {
        std::vector<Message> held;
        for (int i = 0; i < count; ++i) {
            held.push_back(readMessage(text));
            held.push_back(copyOf(*held.back()));
            held.back()->getViaHeader()->getParameters()->setValue(
                "x", KxString(std::string(70U * (static_cast<unsigned>(i) % 40U), 'v')));
        }
        return held.back()->createKey() == held.front()->createKey();
    };
    std::atomic<bool> ended = false;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; !ended; ++round) {
                std::thread(work, 20 + round % 50).join(); // frees blocks at its end
                work(50);
            }
        });
    }
    for (int i = 0; i < 300; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            _exit(work(10) ? 0 : 1);
        }
        int status = 0;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (waitpid(child, &status, WNOHANG) == 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            if (std::chrono::steady_clock::now() > deadline) {
                kill(child, SIGKILL);
            }
        }
        EXPECT_EQ(status, 0);
    }
    ended = true;
}
#endif
