// Parameter lists. The first byte chooses: 0 a text, 1 a stream, 2 edits given by the other bytes. Laws: a list is read
// and edited as a plain one. The written text is read and written as itself. A copy is written as its original and is
// independent of it. A list that is made on demand, and shared by its copies, behaves as one that always exists.

#include "fuzz/URIRound.h"
#include "util/KxSharedParameters.h"

#include <array>
#include <utility>
#include <vector>

namespace {

/** The simplest implementation of a list, searched from begin to end. */
class PlainList {
public:
    using Pair = std::pair<std::string, std::string>;

    /** Reads the pairs of a text, or those of a stream, which end at a line end or at a comma outside quotes. Returns
        where they end. */
    std::size_t parse(std::string_view text, bool inStream) {
        const std::string_view ends = inStream ? "\r\n" : "";
        std::size_t begin = 0;
        std::size_t at = 0;
        for (bool quoted = false; at != text.size() && !hasAnyOf(ends, text.substr(at, 1)); ++at) {
            const char c = text[at];
            if (c == '"') {
                quoted = !quoted;
            } else if (quoted && c == '\\') {
                at += at + 1 == text.size() || hasAnyOf(ends, text.substr(at + 1, 1)) ? 0 : 1;
            } else if (!quoted && c == ',' && inStream) {
                break;
            } else if (!quoted && c == ';') {
                addRead(text.substr(begin, at - begin));
                begin = at + 1;
            }
        }
        addRead(text.substr(begin, at - begin));
        return at;
    }
    std::vector<Pair>::iterator find(std::string_view name) {
        return std::find_if(m_pairs.begin(), m_pairs.end(),
                            [name](const Pair& pair) { return KxAscii::equalsNoCase(pair.first, name); });
    }
    void set(std::string_view name, std::string_view value) {
        if (const auto pair = find(name); pair != m_pairs.end()) {
            pair->second = value;
        } else {
            m_pairs.emplace_back(name, value);
        }
    }
    bool remove(std::string_view name) {
        const auto pair = find(name);
        const bool found = pair != m_pairs.end();
        if (found) {
            m_pairs.erase(pair);
        }
        return found;
    }
    void clear() { m_pairs.clear(); }
    std::string written() const {
        std::string text;
        for (const auto& [name, value] : m_pairs) {
            text += (&name == &m_pairs[0].first ? "" : ";") + name + (value.empty() ? "" : "=") + value;
        }
        return text;
    }
    bool has(std::string_view name) { return find(name) != m_pairs.end(); }
    std::size_t size() const { return m_pairs.size(); }

private:
    void addRead(std::string_view pair) {
        std::size_t equals = 0; // the first one outside quotes
        for (bool quoted = false; equals < pair.size() && (quoted || pair[equals] != '='); ++equals) {
            quoted ^= pair[equals] == '"';
            equals += quoted && pair[equals] == '\\' ? 1 : 0;
        }
        equals = std::min(equals, pair.size());
        const std::string_view name = KxAscii::trim(pair.substr(0, equals));
        const std::string_view value = KxAscii::trim(pair.substr(std::min(equals + 1, pair.size())));
        if (!name.empty() || !value.empty()) {
            set(name, value);
        }
    }

    std::vector<Pair> m_pairs;
};

void checkAgainst(const KxParameters& list, PlainList& plain) {
    same("a list is written as it is the plain way", plain.written(), list.getString());
    if (list.size() != plain.size() || list.empty() != (plain.size() == 0)) {
        fail("a list has as many pairs as it has the plain way", plain.written(), list.getString());
    }
}

void checkReading(std::string_view text, bool inStream) {
    const Block block(text);
    KxParameters list;
    PlainList plain;
    const std::size_t end = plain.parse(text, inStream);
    if (inStream) {
        KxByteArrayInputStream in(block.view());
        list.parse(in);
        Dribble dribble(text);
        KxParameters slow;
        slow.parse(dribble);
        same("a stream that dribbles reads as memory", written(list), written(slow));
        same("a list ends where it does the plain way", text.substr(end), in.window());
        same("a list ends where it does the plain way", text.substr(end), restOf(dribble));
    } else {
        list.parse(block.view());
    }
    checkAgainst(list, plain);
    const std::string first = written(list);
    checkWriting(list, first);
    for (const KxParameters::Pair& pair : list) {
        same("a value is found by its name", plain.find(pair.name)->second, list.getValue(pair.name));
    }
    if (!hasOddQuotes(list)) {
        const Block again(first);
        KxParameters second;
        second.parse(again.view());
        same("what was written is written again", first, written(second));
    }
}

/** The same list in each of its forms, which must be alike. */
struct Lists {
    void checkName(const std::string& name) {
        if (list.isPresent(name) != plain.has(name) || lazy.isPresent(name) != plain.has(name)) {
            fail("a name is there, or not, as it is the plain way", name, plain.written());
        }
        same("both lists give the same value", list.getValue(name), lazy.getValue(name));
    }
    void check() {
        checkAgainst(list, plain);
        checkWriting(list, plain.written());
        Pieces pieces;
        lazy.serializeWithSemicolon(pieces);
        same("the list made on demand is written as the other", (plain.size() == 0 ? "" : ";") + plain.written(),
             pieces.text);
        if (lazy.size() != plain.size() ||
            static_cast<std::size_t>(std::distance(lazy.begin(), lazy.end())) != plain.size()) {
            fail("both lists have as many pairs", plain.written(), lazy.getString());
        }
        same("a list that is asked for is the one there is", plain.written(), lazy.handle()->getString());
    }

    KxParameters list;
    KxSharedParameters lazy;
    PlainList plain;
};

/** One edit, given by two bytes of the program: changes `lists`, or makes `others` a copy of it. */
void edit(Lists& lists, Lists& others, unsigned what, unsigned which) {
    const std::string name = std::string(1, (which & 1) != 0 ? 'n' : 'N') + std::to_string(which / 2);
    const KxString value((what & 8) != 0 ? "" : "v" + std::to_string(what));
    const bool isThere = lists.plain.has(name);
    const KxHandle<KxParameters> lent = (what & 32) != 0 ? lists.lazy.handle() : KxHandle<KxParameters>();
    const auto toWrite = [&]() -> KxParameters& { return lent.isNil() ? lists.lazy.write() : *lent; };
    switch (what % 8) {
    default:
        lists.list.setValue(name, value);
        toWrite().setValue(name, value);
        lists.plain.set(name, value);
        break;
    case 4:
        if (lists.list.removeValue(name) != isThere || lists.lazy.removeValue(name) != isThere ||
            lists.plain.remove(name) != isThere) {
            fail("what is there is removed", name, lists.plain.written());
        }
        break;
    case 5:
        others = lists;
        break;
    case 6: {
        const std::string text = name + ";x" + name + '=' + value.c_str();
        lists.list.parse(text);
        toWrite().parse(text);
        lists.plain.parse(text, false);
        break;
    }
    case 7:
        if (which == 7) {
            lists.list.clear();
            lists.lazy.clear();
            lists.plain.clear();
        }
        lists.list.setValue(name + 'x', KxString()); // nil stores nothing
    }
    lists.checkName(name);
    others.checkName(name);
}

void checkEdits(std::string_view program) {
    std::array<Lists, 2> lists;
    for (program = program.substr(0, 400); program.size() >= 2; program.remove_prefix(2)) {
        const unsigned what = static_cast<unsigned char>(program[0]);
        const unsigned one = what >> 4 & 1;
        edit(lists[one], lists[1 - one], what, static_cast<unsigned char>(program[1]));
    }
    for (Lists& each : lists) {
        each.check();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 3) {
    case 0:
    case 1:
        checkReading(text, data[0] % 3 == 1);
        break;
    default:
        checkEdits(text);
    }
    return 0;
}
