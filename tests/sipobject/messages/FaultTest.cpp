// Failing allocations, input that ends early, output that takes no more. A failed operation leaks nothing, changes no
// object, and succeeds when it is repeated.

#include "tests/sipobject/support/AllocationFault.h"
#include "tests/sipobject/support/Operations.h"

#include <optional>

using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/** The outcome of f with the n-th allocation failing; nothing if there are fewer. */
template <class F>
std::optional<std::string> failing(std::uint64_t n, F f) {
    Made made;
    bool hasFailed = false;
    const std::string failure = outcomeOf([&] {
        const AllocationFault fault(n, hasFailed);
        made = f();
        return "";
    });
    return !hasFailed ? std::nullopt : std::optional(failure.empty() ? textOf(made) : failure);
}

const auto kNoMemory = AnyOf("std::bad_alloc: std::bad_alloc", StartsWith("KxSipParseError: failed to allocate a SIP "
                                                                          "message body of size "));
/** Calls f with the text of every message of the samples and golden files. */
template <class F>
void forEveryMessage(F f) {
    for (const char* folder : {"samples", "tests/messages"}) {
        for (const std::string& text : messagesOf(folder)) {
            SCOPED_TRACE(text);
            f(text);
        }
    }
}

/** Ends after the text, or throws, but says that there is more, and that it delivered more than there was room for. */
class LyingStream final : public KxInputStream {
public:
    explicit LyingStream(std::string_view text, bool isLost = false) : m_left(text), m_isLost(isLost) {}

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override {
        const std::size_t count = m_left.copy(buffer, capacity);
        m_left.remove_prefix(count);
        if (count == 0 && m_isLost) {
            throw std::runtime_error("lost");
        }
        return count == capacity ? SIZE_MAX : count;
    }
    std::size_t availableBeyondWindow() const override { return SIZE_MAX / 2; }

private:
    std::string_view m_left;
    bool m_isLost;
};

/** Takes `capacity` bytes, then throws; offers a window of the given size, or none. */
class NarrowSink final : public KxOutputStream {
public:
    explicit NarrowSink(std::size_t capacity, std::size_t window = 0) : m_capacity(capacity), m_window(window, '\0') {
        offer();
    }
    std::string taken() {
        empty();
        return m_taken;
    }
    void flush() override { empty(); }

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override {
        empty();
        take({bytes, count});
    }

private:
    void offer() { setWindow(m_window.data(), m_window.data() + m_window.size()); }
    void empty() {
        const auto used = static_cast<std::size_t>(cursor() - m_window.data());
        offer();
        take({m_window.data(), used});
    }
    void take(std::string_view bytes) {
        const std::size_t fits = std::min(bytes.size(), m_capacity - m_taken.size());
        m_taken += bytes.substr(0, fits);
        if (fits != bytes.size()) {
            throw std::runtime_error("full");
        }
    }

    std::size_t m_capacity;
    std::string m_window;
    std::string m_taken;
};

} // namespace

TEST(FaultTest, ReadingWithoutMemory) {
    int faults = 0;
    forEveryMessage([&faults](const std::string& text) {
        const std::string usual = dumpOf(*readMessage(text));
        for (const std::size_t step : {std::size_t{0}, std::size_t{5}}) { // from memory, and from a slow stream
            for (std::uint64_t n = 1;; ++n, ++faults) {
                const Balance balance;
                KxByteArrayInputStream memory{std::string_view(text)};
                DribblingStream slow(text, step);
                KxInputStream& in = step == 0 ? static_cast<KxInputStream&>(memory) : slow;
                const auto outcome = failing(n, [&in] { return Made(KxSipMessage::sConstructFrom(in)); });
                if (!outcome) {
                    break;
                }
                ASSERT_THAT(*outcome, kNoMemory) << n;
            }
            EXPECT_EQ(dumpOf(*readMessage(text)), usual);
        }
    });
    EXPECT_GT(faults, 100);
}

TEST(FaultTest, WorkingWithoutMemory) {
    int faults = 0;
    forEveryMessage([&faults](const std::string& text) {
        std::vector<Operation> operations = kSharedOperations;
        operations.insert(operations.end(), kOtherOperations.begin(), kOtherOperations.end());
        for (const Operation& operation : operations) {
            const auto run = [&operation](const Message& on) {
                return outcomeOf([&] { return textOf(operation.run(on)); });
            };
            const Message usual = readMessage(text);
            const std::string before = written(*usual);
            const std::string outcome = run(usual);
            if (outcome.starts_with("Unfit")) {
                continue;
            }
            const std::string after = written(*usual);
            for (std::uint64_t n = 1;; ++n, ++faults) {
                const Balance balance;
                const Message message = readMessage(text);
                const auto got = failing(n, [&] { return operation.run(message); });
                if (!got) {
                    break;
                }
                if (*got == outcome) { // the operation did without
                    EXPECT_EQ(written(*message), after) << operation.name << " failing at " << n;
                    continue;
                }
                ASSERT_THAT(*got, kNoMemory) << operation.name << ' ' << n;
                EXPECT_EQ(written(*message), before) << operation.name << " failing at " << n;
                EXPECT_EQ(run(message), outcome) << operation.name << " failing at " << n;
                EXPECT_EQ(written(*message), after) << operation.name << " failing at " << n;
            }
        }
    });
    EXPECT_GT(faults, 100);
}

/** An input that ends early is read up to its end, with the same result from every stream, also if it lies about what
    there is. What a stream throws reaches the caller. */
TEST(FaultTest, InputThatEndsLiesOrFails) {
    forEveryMessage([](const std::string& text) {
        const std::string whole = dumpOf(*readMessage(text));
        for (std::size_t length = 0; length < text.size(); length += 1 + text.size() / 1000) {
            const Balance balance;
            const std::string_view part = std::string_view(text).substr(0, length);
            const std::string dump = readEveryWay(part, readDump);
            ASSERT_THAT(dump, AnyOf(StartsWith("Kx"), HasSubstr("\nstatus "))) << length;
            LyingStream liar(part);
            ASSERT_THAT(readDump(liar), AnyOf(StartsWith("Kx"), dump.substr(0, dump.rfind('@')))) << length;
            LyingStream lost(part, true);
            ASSERT_THAT(readDump(lost), AnyOf("std::runtime_error: lost", whole)) << length;
            DribblingStream broken(text, 7, true, length);
            ASSERT_THAT(readDump(broken), AnyOf("KxException: connection lost", HasSubstr("\nstatus "))) << length;
        }
    });
}

TEST(FaultTest, OutputThatFails) {
    forEveryMessage([](const std::string& text) {
        const Balance balance;
        const Message message = readMessage(text);
        const std::string whole = written(*message);
        for (std::size_t capacity = 0; capacity < whole.size(); capacity += 1 + whole.size() / 1000) {
            for (const std::size_t window : {0U, 7U, 4096U}) {
                NarrowSink full(capacity, window);
                ASSERT_EQ(outcomeOf([&] { return message->serialize(full), ""; }), "std::runtime_error: full");
                ASSERT_EQ(full.taken(), whole.substr(0, capacity));
            }
            NarrowSink narrow(whole.size(), capacity);
            message->serialize(narrow);
            ASSERT_EQ(narrow.taken(), whole) << "in pieces of " << capacity;
        }
        EXPECT_EQ(written(*message), whole);
    });
}
