#include "tests/sipobject/support/HeaderSupport.h"

#include <array>
#include <set>

namespace {

/** Three messages and the headers that a host holds, together with the expected state: plain lists of numbers, each of
    which is a header with its line. Every step changes both, and then both are compared. */
class Model {
public:
    explicit Model(unsigned seed) : m_random(seed) {
        for (KxHandle<OpenRequest>& message : m_messages) {
            message = KxMake<OpenRequest>("TEST");
        }
        make();
    }

    void step() {
        const std::size_t which = pick(m_messages.size());
        const std::size_t what = pick(320);
        if (what < 60) {
            make();
        } else if (what < 80) {
            hold(which);
        } else if (what < 81) {
            copy(which, (which + 1 + pick(2)) % m_messages.size());
        } else if (what < 180) {
            remove(which);
        } else {
            (what < 200 ? addSingle(which, pick(2) == 0) : add(which, pick(2) == 0));
        }
        if (m_held.size() > 40) {
            m_held.erase(m_held.begin() + static_cast<std::ptrdiff_t>(pick(m_held.size())));
        }
    }

    void expectSame() {
        std::set<const KxSipHeader*> objects;
        for (std::size_t which = 0; which < m_messages.size(); ++which) {
            const KxSipMessage& message = *m_messages[which];
            std::vector<HeaderID> order;
            for (const auto& [kind, values] : m_lists[which]) {
                order.push_back(kind);
                longest = std::max(longest, values.size());
                const KxSipHeader* object = message.getHeaderByID(kind).get();
                for (const int value : values) {
                    ASSERT_NE(object, nullptr);
                    Header& expected = m_headers[static_cast<std::size_t>(value)];
                    if (expected.object == nullptr) { // a copy that the message made
                        ASSERT_EQ(written(*copyOf(*object)), expected.line + "\r\n");
                        expected.object = object;
                    }
                    ASSERT_EQ(object, expected.object) << expected.line;
                    ASSERT_TRUE(objects.insert(object).second) << expected.line << " is in two places";
                    object = object->getNext().get();
                }
                ASSERT_EQ(object, nullptr);
            }
            ASSERT_EQ(message.getHeaderOrder(), order);
        }
        for (const auto& [number, handle] : m_held) {
            const KxSipHeader* object = handle.get();
            for (int value = number; value >= 0; value = next(value)) {
                ASSERT_NE(object, nullptr);
                ASSERT_EQ(object, m_headers[static_cast<std::size_t>(value)].object);
                object = object->getNext().get();
            }
            ASSERT_EQ(object, nullptr);
        }
    }
    std::size_t longest = 0; ///< List so far.

private:
    struct Header {
        std::string line;
        HeaderID kind;
        const KxSipHeader* object; ///< Null where it is not known yet.
        int next = -1;             ///< Of one that is in no message.
        int message = -1;
    };
    using List = std::pair<HeaderID, std::vector<int>>;
    using Lists = std::vector<List>;

    std::size_t pick(std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_random); }
    Header& at(int number) { return m_headers[static_cast<std::size_t>(number)]; }
    static KxHandle<KxSipHeader> copyOf(const KxSipHeader& header) {
        return KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(header.clone()));
    }
    std::string nameOf(int number) { return at(number).line.substr(0, at(number).line.find(':')); }
    int give(std::string line, HeaderID kind, const KxSipHeader* object) {
        m_headers.push_back({std::move(line), kind, object});
        return static_cast<int>(m_headers.size()) - 1;
    }
    Lists::iterator listOf(std::size_t which, HeaderID kind) {
        return std::find_if(m_lists[which].begin(), m_lists[which].end(),
                            [kind](const List& list) { return list.first == kind; });
    }
    int next(int number) {
        if (at(number).message < 0) {
            return at(number).next;
        }
        const std::vector<int>& values = listOf(static_cast<std::size_t>(at(number).message), at(number).kind)->second;
        const auto found = std::find(values.begin(), values.end(), number);
        return found + 1 == values.end() ? -1 : found[1];
    }

    /** Reads a line of one value or more; each value is a header that the host may hold. */
    void make() {
        static constexpr std::array kNames{"Require", "Supported", "k", "X-A", "x-a", "X-B", "X-C", "X-D"};
        const std::string name = kNames[pick(kNames.size())];
        std::string line = name + ": v" + std::to_string(m_headers.size());
        for (std::size_t more = name[0] == 'X' || name[0] == 'x' ? 0 : pick(3); more != 0; --more) {
            line += ", w" + std::to_string(more);
        }
        const KxHandle<KxSipHeader> first = readHeader(line);
        int previous = -1;
        for (const KxSipHeader* value = first.get(); value != nullptr; value = value->getNext().get()) {
            const std::string text = written(*copyOf(*value));
            const int number = give(text.substr(0, text.size() - 2), value->getHeaderID(), value);
            if (previous < 0) {
                m_held.emplace_back(number, first);
            } else {
                at(previous).next = number;
            }
            previous = number;
        }
    }
    /** Takes a handle to some value of a message, or of the chain of one that is held. */
    void hold(std::size_t which) {
        if (m_lists[which].empty()) {
            return;
        }
        const auto& [kind, values] = m_lists[which][pick(m_lists[which].size())];
        KxHandle<KxSipHeader> object = m_messages[which]->getHeaderByID(kind);
        const std::size_t place = pick(values.size());
        for (std::size_t i = 0; i < place; ++i) {
            object = object->getNext();
        }
        m_held.emplace_back(values[place], object);
    }
    void copy(std::size_t from, std::size_t to) {
        m_messages[to] = KxHandle<OpenRequest>(m_messages[from]->clone());
        for (const auto& [kind, values] : m_lists[to]) { // what the host still holds is free, and chained as before
            for (std::size_t i = 0; i < values.size(); ++i) {
                at(values[i]).message = -1;
                at(values[i]).next = i + 1 == values.size() ? -1 : values[i + 1];
            }
        }
        m_lists[to].clear();
        for (const auto& [kind, values] : m_lists[from]) {
            std::vector<int> copies;
            for (const int value : values) {
                copies.push_back(give(at(value).line, kind, nullptr));
                at(copies.back()).message = static_cast<int>(to);
            }
            m_lists[to].emplace_back(kind, copies);
        }
    }
    void insert(std::size_t which, int number, bool first) {
        std::vector<int> values{number};
        const auto list = listOf(which, at(number).kind);
        const bool isEmpty = list == m_lists[which].end();
        if (isEmpty || !first) {
            for (int value = at(number).next; value >= 0; value = next(value)) {
                values.push_back(value);
            }
            if (std::any_of(values.begin(), values.end(), [this](int value) { return at(value).message >= 0; })) {
                values.resize(1);
                at(number).next = -1;
            }
        }
        for (const int value : values) {
            at(value).message = static_cast<int>(which);
        }
        if (isEmpty) {
            m_lists[which].emplace_back(at(number).kind, values);
        } else {
            list->second.insert(first ? list->second.begin() : list->second.end(), values.begin(), values.end());
        }
    }
    void add(std::size_t which, bool first) {
        auto [number, handle] = m_held[pick(m_held.size())];
        m_messages[which]->addHeader(handle, first);
        if (at(number).message >= 0) {
            const auto list = listOf(which, at(number).kind);
            if (list != m_lists[which].end() && list->second.front() == number) {
                return;
            }
            number = give(at(number).line, at(number).kind, nullptr);
        }
        insert(which, number, first);
    }
    void addSingle(std::size_t which, bool first) {
        const auto [number, handle] = m_held[pick(m_held.size())];
        m_messages[which]->addSingleHeader(handle, first);
        if (find(which, nameOf(number), true) != number) {
            insert(which, give(at(number).line, at(number).kind, nullptr), first);
        }
    }
    /** The header that has the name; of unknown ones the first with exactly that name, or in any letter case. */
    int find(std::size_t which, std::string_view name, bool exact) {
        for (const auto& [kind, values] : m_lists[which]) {
            if (kind != KxHeaderIDs::kUnknown && KxAscii::equalsNoCase(nameOf(values.front()), name)) {
                return values.front();
            }
        }
        const auto unknown = listOf(which, KxHeaderIDs::kUnknown);
        if (unknown != m_lists[which].end()) {
            for (const int value : unknown->second) {
                if (exact ? nameOf(value) == name : KxAscii::equalsNoCase(nameOf(value), name)) {
                    return value;
                }
            }
        }
        return -1;
    }
    void remove(std::size_t which) {
        static constexpr std::array kNames{"require", "Supported", "K", "x-A", "X-A", "x-b", "X-C", "x-d", "X-E"};
        const std::string_view name = kNames[pick(kNames.size())];
        const int number = find(which, name, false);
        const int exact = find(which, name, true);
        const KxHandle<KxSipHeader> found = m_messages[which]->getHeader(name);
        EXPECT_EQ(found.get(), exact < 0 ? nullptr : at(exact).object) << name;
        EXPECT_EQ(m_messages[which]->removeHeader(name), number >= 0) << name;
        if (number < 0) {
            return;
        }
        const auto list = listOf(which, at(number).kind);
        std::erase(list->second, number);
        if (list->second.empty()) {
            m_lists[which].erase(list);
        }
        at(number).message = -1;
        at(number).next = -1;
    }

    std::mt19937 m_random;
    std::array<KxHandle<OpenRequest>, 3> m_messages;
    std::array<Lists, 3> m_lists;
    std::vector<Header> m_headers;
    std::vector<std::pair<int, KxHandle<KxSipHeader>>> m_held;
};

} // namespace

/** KX_MODEL_STEPS random operations: add, prepend, add single, remove, hold, drop, clone over another message. */
TEST(MessageOwnershipTest, ThreeMessagesAreAsPlainLists) {
    const char* const told = std::getenv("KX_MODEL_STEPS");
    const int steps = told == nullptr ? 20000 : std::atoi(told);
    const Balance balance;
    std::size_t longest = 0;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        Model model(seed);
        for (int i = 0; i < steps / 4; ++i) {
            model.step();
            ASSERT_NO_FATAL_FAILURE(model.expectSame()) << "seed " << seed << ", step " << i;
        }
        longest = std::max(longest, model.longest);
    }
    EXPECT_GT(longest, 40U);
}

/** The host may parse another line into a header that is in a message: another name, or more values. */
TEST(MessageOwnershipTest, HeadersChangeInPlace) {
    const auto message = KxMake<OpenRequest>("TEST");
    for (int i = 0; i < 30; ++i) {
        message->addHeader(readHeader("X-" + std::to_string(i) + ": 1"), false);
        message->addHeader(readHeader("Require: 1"), false);
    }
    EXPECT_TRUE(message->removeHeader("x-28"));
    const auto readAnew = [&message](const char* name, std::string_view line) {
        KxByteArrayInputStream in(line);
        message->getHeader(name)->parse(in);
    };
    readAnew("X-27", "X-New: 2\r\n");
    EXPECT_TRUE(message->getHeader("X-27").isNil());
    EXPECT_FALSE(message->removeHeader("x-27"));
    EXPECT_TRUE(message->removeHeader("x-new"));
    readAnew("Require", "Require: a, b\r\n");
    const auto other = KxMake<OpenRequest>("TEST");
    KxHandle<KxSipHeader> last = message->getHeader("Require");
    while (!last->getNext().isNil()) {
        last = last->getNext();
    }
    other->addHeader(last, false); // part of the first message too
    EXPECT_EQ(written(*other), "TEST : SIP/2.0\r\nRequire: b\r\n\r\n");
    EXPECT_NE(other->getHeader("Require"), last);
}
