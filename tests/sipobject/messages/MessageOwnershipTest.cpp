#include "tests/sipobject/support/HeaderSupport.h"

#include <deque>

namespace {

/** Three messages and the headers that a host holds, and the same as plain linked lists. Every step changes both, and
    then both are compared. */
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
            std::vector<HeaderID> order;
            for (const auto& [kind, first] : m_lists[which]) {
                order.push_back(kind);
                expectChain(first, m_messages[which]->getHeaderByID(kind).get());
                for (const Header* header : chainOf(first)) {
                    ASSERT_TRUE(objects.insert(header->object).second) << header->line << " is in two places";
                }
            }
            ASSERT_EQ(m_messages[which]->getHeaderOrder(), order);
        }
        for (const auto& [header, handle] : m_held) {
            expectChain(header, handle.get());
        }
    }
    std::size_t longest = 0; ///< Chain so far.

private:
    struct Header {
        std::string line;
        HeaderID kind;
        const KxSipHeader* object; ///< Null if it is not known yet.
        bool isInMessage = false;
        Header* next = nullptr;

        std::string name() const { return line.substr(0, line.find(':')); }
    };
    using Lists = std::vector<std::pair<HeaderID, Header*>>;

    std::size_t pick(std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_random); }
    Header* give(std::string line, HeaderID kind, const KxSipHeader* object) {
        return &m_headers.emplace_back(Header{std::move(line), kind, object});
    }
    Lists::iterator listOf(std::size_t which, HeaderID kind) {
        return std::find_if(m_lists[which].begin(), m_lists[which].end(),
                            [kind](const auto& list) { return list.first == kind; });
    }
    static std::vector<Header*> chainOf(Header* header) {
        std::vector<Header*> chain;
        for (; header != nullptr; header = header->next) {
            chain.push_back(header);
        }
        return chain;
    }
    void expectChain(Header* first, const KxSipHeader* object) {
        const std::vector<Header*> chain = chainOf(first);
        longest = std::max(longest, chain.size());
        for (Header* header : chain) {
            ASSERT_NE(object, nullptr);
            if (header->object == nullptr) { // a copy that the message made
                ASSERT_EQ(lineOf(*object), header->line);
                header->object = object;
            }
            ASSERT_EQ(object, header->object) << header->line;
            object = object->getNext().get();
        }
        ASSERT_EQ(object, nullptr);
    }

    /** Reads a line of one value or more; each value is a header that the host may hold. */
    void make() {
        static constexpr std::array kNames{"Require", "Supported",    "k",      "X-A",       "x-a", "X-B", "X-C",
                                           "X-D",     "X-Kx-Account", "x-kx-a", "X-Kx-Level"};
        const std::string name = kNames[pick(kNames.size())];
        std::string line = name + ": 1" + std::to_string(m_headers.size());
        for (std::size_t more = name.size() == 3 ? 0 : pick(3); more != 0; --more) {
            line += ", 2" + std::to_string(more);
        }
        const KxHandle<KxSipHeader> first = readHeader(line);
        Header* head = nullptr;
        Header** end = &head;
        for (const KxSipHeader* value = first.get(); value != nullptr; value = value->getNext().get()) {
            *end = give(lineOf(*value), value->getHeaderID(), value);
            end = &(*end)->next;
        }
        m_held.emplace_back(head, first);
    }
    /** Takes a handle to some value of a message. */
    void hold(std::size_t which) {
        if (m_lists[which].empty()) {
            return;
        }
        const auto& [kind, first] = m_lists[which][pick(m_lists[which].size())];
        const std::vector<Header*> chain = chainOf(first);
        KxHandle<KxSipHeader> object = m_messages[which]->getHeaderByID(kind);
        const std::size_t place = pick(chain.size());
        for (std::size_t i = 0; i < place; ++i) {
            object = object->getNext();
        }
        m_held.emplace_back(chain[place], object);
    }
    void copy(std::size_t from, std::size_t to) {
        m_messages[to] = KxHandle<OpenRequest>(m_messages[from]->clone());
        for (const auto& [kind, first] : std::exchange(m_lists[to], {})) { // headers that the host holds stay chained
            for (Header* header : chainOf(first)) {
                header->isInMessage = false;
            }
        }
        for (const auto& [kind, first] : m_lists[from]) {
            Header** end = &m_lists[to].emplace_back(kind, nullptr).second;
            for (const Header* header : chainOf(first)) {
                *end = give(header->line, kind, nullptr);
                (*end)->isInMessage = true;
                end = &(*end)->next;
            }
        }
    }
    void insert(std::size_t which, Header* header, bool first) {
        const auto list = listOf(which, header->kind);
        const bool isEmpty = list == m_lists[which].end();
        const std::vector<Header*> others = chainOf(header->next);
        const auto isTaken = [](const Header* other) { return other->isInMessage; };
        if ((first && !isEmpty) || std::any_of(others.begin(), others.end(), isTaken)) {
            header->next = nullptr;
        }
        for (Header* each : chainOf(header)) {
            each->isInMessage = true;
        }
        if (isEmpty) {
            m_lists[which].emplace_back(header->kind, header);
        } else if (first) {
            header->next = std::exchange(list->second, header);
        } else {
            chainOf(list->second).back()->next = header;
        }
    }
    void add(std::size_t which, bool first) {
        auto [header, handle] = m_held[pick(m_held.size())];
        m_messages[which]->addHeader(handle, first);
        if (header->isInMessage) {
            const auto list = listOf(which, header->kind);
            if (list != m_lists[which].end() && list->second == header) {
                return;
            }
            header = give(header->line, header->kind, nullptr);
        }
        insert(which, header, first);
    }
    void addSingle(std::size_t which, bool first) {
        const auto [header, handle] = m_held[pick(m_held.size())];
        m_messages[which]->addSingleHeader(handle, first);
        if (find(which, header->name(), true) != header) {
            insert(which, give(header->line, header->kind, nullptr), first);
        }
    }
    /** The header of that name. Names of unknown headers are compared exactly, or ignoring case. */
    Header* find(std::size_t which, std::string_view name, bool exact) {
        for (const auto& [kind, first] : m_lists[which]) {
            if (kind != KxHeaderIDs::kUnknown && KxAscii::equalsNoCase(first->name(), name)) {
                return first;
            }
        }
        const auto unknown = listOf(which, KxHeaderIDs::kUnknown);
        for (Header* header : chainOf(unknown == m_lists[which].end() ? nullptr : unknown->second)) {
            if (exact ? header->name() == name : KxAscii::equalsNoCase(header->name(), name)) {
                return header;
            }
        }
        return nullptr;
    }
    /** All headers of the name, which has a class or is compared ignoring case. */
    std::vector<Header*> allNamed(std::size_t which, std::string_view name) {
        const HeaderID kind = readHeader(std::string(name) + ": a")->getHeaderID();
        const auto list = listOf(which, kind);
        std::vector<Header*> all = chainOf(list == m_lists[which].end() ? nullptr : list->second);
        std::erase_if(all, [kind, name](const Header* header) {
            return kind == KxHeaderIDs::kUnknown && !KxAscii::equalsNoCase(header->name(), name);
        });
        return all;
    }
    void remove(std::size_t which) {
        static constexpr std::array kNames{"require", "Supported", "K",   "x-A",    "X-A",          "x-b",
                                           "X-C",     "x-d",       "X-E", "X-Kx-A", "x-kx-account", "x-kx-level"};
        const std::string_view name = kNames[pick(kNames.size())];
        Header* const header = find(which, name, false);
        const Header* const exact = find(which, name, true);
        const KxHandle<KxSipHeader> found = m_messages[which]->getHeader(name);
        EXPECT_EQ(found.get(), exact == nullptr ? nullptr : exact->object) << name;
        const std::vector<Header*> all = allNamed(which, name);
        std::size_t seen = 0;
        for (const KxSipHeader& value : m_messages[which]->valuesNamed(name)) {
            EXPECT_EQ(&value, seen < all.size() ? all[seen]->object : nullptr) << name << ' ' << seen;
            ++seen;
        }
        EXPECT_EQ(seen, all.size()) << name;
        if (pick(40) == 0) {
            EXPECT_EQ(m_messages[which]->removeAllNamed(name), all.size()) << name;
            for (Header* const each : all) {
                unlink(which, each);
            }
            return;
        }
        EXPECT_EQ(m_messages[which]->removeHeader(name), header != nullptr) << name;
        if (header != nullptr) {
            unlink(which, header);
        }
    }
    void unlink(std::size_t which, Header* header) {
        const auto list = listOf(which, header->kind);
        Header** link = &list->second;
        while (*link != header) {
            link = &(*link)->next;
        }
        *link = std::exchange(header->next, nullptr);
        header->isInMessage = false;
        if (list->second == nullptr) {
            m_lists[which].erase(list);
        }
    }

    std::mt19937 m_random;
    std::array<KxHandle<OpenRequest>, 3> m_messages;
    std::array<Lists, 3> m_lists;
    std::deque<Header> m_headers;
    std::vector<std::pair<Header*, KxHandle<KxSipHeader>>> m_held;
};

} // namespace

/** KX_MODEL_STEPS random operations: add, prepend, add single, remove, hold, drop, clone over another message. */
TEST(MessageOwnershipTest, ThreeMessagesAreAsPlainLists) {
    const char* const given = std::getenv("KX_MODEL_STEPS");
    const int steps = given == nullptr ? 20000 : std::atoi(given);
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
