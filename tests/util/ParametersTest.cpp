#include "tests/util/Streams.h"

#include "core/MemAllocatorFaults.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxLazyParameters.h"

#include <array>
#include <atomic>
#include <chrono>
#include <new>
#include <thread>
#include <vector>

using namespace std::string_view_literals;

namespace {

/** The list as a plain vector. */
struct Model : std::vector<std::pair<std::string, std::string>> {
    iterator find(std::string_view name) {
        return std::find_if(begin(), end(), [&](const auto& pair) { return KxAscii::equalsNoCase(pair.first, name); });
    }
    void set(std::string_view name, std::string_view value) {
        if (const auto found = find(name); found != end())
            found->second = value;
        else
            emplace_back(name, value);
    }
};

/** Every pair as "name>value|". */
template <class List>
std::string dump(const List& list) {
    std::string text;
    for (const auto& [name, value] : list)
        text.append(std::string_view(name)).append(">").append(std::string_view(value)).append("|");
    return text;
}

/** The grammar read a character at a time: the pairs, "@", and what is left unread. A stream's list ends at a comma
    or line end; neither a quote nor a backslash continues it over a line end. */
std::string expectedOf(std::string_view text, bool inStream) {
    Model model;
    std::string name;
    std::string value;
    std::string* part = &name;
    bool quoted = false;
    const auto endPair = [&] {
        if (!KxAscii::trim(name).empty() || !KxAscii::trim(value).empty())
            model.set(KxAscii::trim(name), KxAscii::trim(value));
        name = value = "";
        part = &name;
    };
    const auto endsLine = [&](std::size_t i) { return inStream && (text[i] == '\r' || text[i] == '\n'); };
    std::size_t at = 0;
    for (; at < text.size() && !endsLine(at) && (quoted || !inStream || text[at] != ','); ++at) {
        if (text[at] == ';' && !quoted) {
            endPair();
        } else if (text[at] == '=' && !quoted && part == &name) {
            part = &value;
        } else {
            *part += text[at];
            if (quoted && text[at] == '\\' && at + 1 < text.size() && !endsLine(at + 1))
                *part += text[++at];
            else if (text[at] == '"')
                quoted = !quoted;
        }
    }
    endPair();
    return dump(model) + "@" + std::string(text.substr(at));
}

std::string parseStream(KxInputStream& in) {
    KxParameters list;
    list.parse(in);
    return dump(list);
}

void expectRead(std::string_view text) {
    ASSERT_EQ(readEveryWay(text, parseStream), expectedOf(text, true)) << testing::PrintToString(text);
    KxParameters list;
    list.parse(HeapText(text).view());
    ASSERT_EQ(dump(list) + "@", expectedOf(text, false)) << testing::PrintToString(text);
}

} // namespace

TEST(ParametersTest, ReadsEveryTextAsTheGrammarSays) {
    forEveryText("a=;\",\\\n", 5, expectRead);
    Dice dice;
    for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i)
        expectRead(dice.text("aaAbc==;;;\"\"\\ \t\0\xC4\xE4"sv, dice(60)) + dice.text("ab=;,\r\n\"\\ ", dice(8)));
}

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
    list.setValue("d", KxString());
    list.setValue("d", *list.findValue("c")); // its own value, while it grows
    list.setValue("e", list.begin()->name);
    list.setValue("C", KxString(""));
    list.getValue("e").append("!"); // a copy's
    EXPECT_EQ(list.getString(), "a;b;c;d=3;e=a");
}

TEST(ParametersTest, FollowsAnyEditing) {
    Dice dice;
    KxParameters list;
    Model model;
    for (int i = 0; i < 5000; ++i) {
        std::string name = "name" + std::to_string(dice(i < 2000 ? 6 : 60)); // in the object; through an index
        name[0] = dice(2) == 0 ? 'n' : 'N';
        const std::string value = dice(4) == 0 ? "" : std::to_string(i);
        const auto found = model.find(name);
        const std::size_t what = dice(100);
        if (what < 25) {
            ASSERT_EQ(list.removeValue(name), found != model.end());
            if (found != model.end())
                model.erase(found);
        } else if (what < 40) {
            const KxParameters copy(list);
            list.setValue("not in the copy", KxString("x"));
            list.removeValue(name);
            list = copy;
            list = static_cast<const KxParameters&>(list);
        } else if (what == 40) {
            list.clear();
            model.clear();
        } else {
            list.setValue(name, KxString(value));
            model.set(name, value);
        }
        ASSERT_EQ(dump(list), dump(model)) << i;
        ASSERT_EQ(list.isPresent(name), model.find(name) != model.end());
    }
}

TEST(ParametersTest, RepeatsFromASlowStreamCostTheirLength) {
    std::string text = "first";
    for (int i = 1; i < 100000; ++i)
        text += (i % 2 == 0 ? ";p=" : ";P=") + std::to_string(i);
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
            for (int i = 0; i < size; ++i)
                list.removeValue("gone" + std::to_string(i / 3));
            const std::string before = dump(list);
            KxParameters expected(list);
            change(expected);
            for (std::uint64_t n = 1; !list.isPresent("a new name"); ++n) {
                EXPECT_EQ(dump(list), before);
                Oskan::MemAllocatorFaults::sFailAfter(n);
                try {
                    change(list);
                } catch (const std::bad_alloc&) {
                }
                Oskan::MemAllocatorFaults::sDisarm();
            }
            EXPECT_EQ(dump(list), dump(expected));
        }
    }
}

TEST(LazyParametersTest, ReadsAsEmptyUntilSomethingIsWritten) {
    KxLazyParameters lazy;
    KxByteArrayOutputStream out;
    lazy.serializeWithSemicolon(out);
    EXPECT_FALSE(lazy.removeValue("a"));
    lazy.handle()->setValue("a", KxString("1"));
    lazy.write().setValue("b", KxString(""));
    lazy = static_cast<const KxLazyParameters&>(lazy);
    lazy.serializeWithSemicolon(out);
    EXPECT_EQ(out.view(), ";a=1;b");
    EXPECT_EQ(KxLazyParameters(lazy.handle()).handle(), lazy.handle());
    lazy = KxLazyParameters();
    EXPECT_EQ(lazy.getString(), "");
}

TEST(LazyParametersTest, CopiesShareTheListUntilOneIsChangedOrHandedOut) {
    const struct {
        const char* name;
        void (*change)(KxLazyParameters&);
        const char* changed;
    } rows[] = {
        {"write", [](KxLazyParameters& list) { list.write().setValue("a", KxString("2")); }, "a=2;b"},
        {"remove", [](KxLazyParameters& list) { EXPECT_TRUE(list.removeValue("b")); }, "a=1"},
        {"remove what is absent", [](KxLazyParameters& list) { EXPECT_FALSE(list.removeValue("c")); }, "a=1;b"},
        {"clear", [](KxLazyParameters& list) { list.clear(); }, ""},
        {"hand out", [](KxLazyParameters& list) { list.handle()->setValue("c", KxString("3")); }, "a=1;b;c=3"},
    };
    for (const bool isHandedOut : {false, true}) // a list that was handed out stays the list of its object
        for (const auto& row : rows) {
            SCOPED_TRACE(row.name);
            KxLazyParameters original;
            original.write().parse("a=1;b");
            const KxHandle<KxParameters> list = isHandedOut ? original.handle() : nullptr;
            KxLazyParameters copy(original);
            EXPECT_EQ(original.begin() == copy.begin(), !isHandedOut);
            row.change(copy);
            EXPECT_EQ(copy.getString(), row.changed);
            EXPECT_EQ(original.getString(), "a=1;b");
            row.change(original); // no other object holds its list now
            EXPECT_EQ(original.getString(), row.changed);
            EXPECT_TRUE(!isHandedOut || original.handle() == list);
        }
}

TEST(ThreadLazyParametersTest, ReadersAreHandedOneList) {
    for (int round = 0; round < 2000; ++round) {
        KxLazyParameters source;
        if (round % 2 == 0) // else the readers make the list
            source.write().parse("a=1");
        const KxLazyParameters copy(source);
        std::array<KxHandle<KxParameters>, 2> lists;
        std::atomic<int> ready{0};
        const auto read = [&, &source = std::as_const(source)](KxHandle<KxParameters>& list) {
            for (++ready; ready < 2;)
                std::this_thread::yield();
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

TEST(ThreadLazyParametersTest, NoCopySharesWhatIsHandedOutMeanwhile) {
    constexpr std::size_t kRounds = 20000;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3); // if two threads share a processor
    std::vector<KxLazyParameters> sources(kRounds);
    std::vector<KxHandle<KxParameters>> lists(kRounds);
    for (KxLazyParameters& source : sources)
        source.write().parse("a=1");
    std::atomic<std::size_t> copied{0};
    std::atomic<std::size_t> handedOut{0};
    std::thread lender([&] {
        for (std::size_t i = 0; i < kRounds; handedOut = ++i) {
            while (copied <= i)
                std::this_thread::yield();
            for (std::size_t skew = copied; skew % 16 != 0; ++skew)
                static_cast<void>(copied.load());
            lists[i] = sources[i].handle();
        }
    });
    std::size_t shared = 0;
    for (std::size_t i = 0; i < kRounds && shared == 0 && std::chrono::steady_clock::now() < end; ++i) {
        for (bool isHandedOut = false; !isHandedOut;) { // copies all the time, without a pause
            const KxLazyParameters copy(sources[i]);
            copied = i + 1;
            for (std::size_t wait = i % 2 * 16; wait > 0; --wait)
                static_cast<void>(handedOut.load());
            isHandedOut = handedOut > i;
            shared += isHandedOut && copy.begin() == lists[i]->begin() ? 1 : 0;
        }
    }
    copied = kRounds;
    lender.join();
    EXPECT_EQ(shared, 0U);
}
