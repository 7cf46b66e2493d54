#include "sipobject/address/KxURIEquivalence.h"

#include "sipobject/KxSipEscapes.h"
#include "sipobject/KxSipHost.h"

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

struct Pair {
    std::string name; ///< In lower case.
    std::string value;
    std::size_t place; ///< Its index in the list.
};
using Pairs = std::vector<Pair>;

std::string toLower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), KxAscii::toLower);
    return text;
}

/** The pairs in their normal form, sorted by name; those of one name in the order of the list. */
Pairs normal(const KxSharedParameters& list) {
    Pairs pairs;
    pairs.reserve(list.size());
    for (const KxParameters::Pair& pair : list) {
        pairs.push_back({toLower(KxSipEscapes::sNormal(pair.name)), KxSipEscapes::sNormal(pair.value), pairs.size()});
    }
    std::sort(pairs.begin(), pairs.end(),
              [](const Pair& a, const Pair& b) { return std::tie(a.name, a.place) < std::tie(b.name, b.place); });
    return pairs;
}

/** Whether `isEqual` holds for each pair of the same name, and `mayLack` for the name of each other pair. */
template <class IsEqual, class MayLack>
bool match(const KxSharedParameters& one, const KxSharedParameters& other, IsEqual isEqual, MayLack mayLack) {
    const Pairs first = normal(one);
    const Pairs second = normal(other);
    auto a = first.begin();
    auto b = second.begin();
    while (a != first.end() || b != second.end()) {
        const int order = a == first.end() ? 1 : b == second.end() ? -1 : a->name.compare(b->name);
        if (order == 0 ? !isEqual(*a, *b) : !mayLack(order < 0 ? a->name : b->name)) {
            return false;
        }
        a += order <= 0 ? 1 : 0;
        b += order >= 0 ? 1 : 0;
    }
    return true;
}

bool mayLackNone(std::string_view) {
    return false;
}

/** The two lists, the shorter one first; if they are equally long, the other one. */
std::pair<const KxSharedParameters&, const KxSharedParameters&> inOrder(const KxSharedParameters& one,
                                                                        const KxSharedParameters& other) {
    using Lists = std::pair<const KxSharedParameters&, const KxSharedParameters&>;
    return other.size() > one.size() ? Lists(one, other) : Lists(other, one);
}

} // namespace

bool KxURIEquivalence::sOfUsers(std::string_view one, std::string_view other) {
    return one == other || KxSipEscapes::sNormal(one) == KxSipEscapes::sNormal(other);
}

bool KxURIEquivalence::sOfParameters(const KxSharedParameters& one, const KxSharedParameters& other) {
    static constexpr std::array<std::string_view, 5> kDecisive = {"maddr", "method", "transport", "ttl", "user"};
    return match(
        one, other,
        [](const Pair& a, const Pair& b) {
            return a.name == "maddr" ? KxSipHost::sAreEqual(a.value, b.value) : KxAscii::equalsNoCase(a.value, b.value);
        },
        [](std::string_view name) { return std::find(kDecisive.begin(), kDecisive.end(), name) == kDecisive.end(); });
}

bool KxURIEquivalence::sOfHeaders(const KxSharedParameters& one, const KxSharedParameters& other) {
    return match(
        one, other, [](const Pair& a, const Pair& b) { return a.value == b.value; }, mayLackNone);
}

bool KxURIEquivalence::sOfNumbers(std::string_view one, std::string_view other) {
    static constexpr KxCharSet kVisualSeparators("-.()");
    const auto digits = [](std::string_view text) {
        std::string number = toLower(KxSipEscapes::sNormal(text));
        std::erase_if(number, [](char c) { return kVisualSeparators.contains(c); });
        return number;
    };
    return digits(one) == digits(other);
}

bool KxURIEquivalence::sOfTelParameters(const KxSharedParameters& one, const KxSharedParameters& other) {
    const auto isEqual = [](const Pair& a, const Pair& b) {
        const bool isNumber = a.name == "ext" || (a.name == "phone-context" && a.value.starts_with('+'));
        return isNumber ? sOfNumbers(a.value, b.value) : KxAscii::equalsNoCase(a.value, b.value);
    };
    return match(one, other, isEqual, mayLackNone);
}

bool KxURIEquivalence::sMatchParameters(const KxSharedParameters& one, const KxSharedParameters& other) {
    const auto& [shorter, longer] = inOrder(one, other);
    if (longer.size() >= shorter.size() + 2) {
        return false;
    }
    return std::all_of(shorter.begin(), shorter.end(), [&all = longer](const KxParameters::Pair& pair) {
        const KxString* const twin = all.findValue(pair.name);
        return pair.name.equalsNoCase("transport") || (twin != nullptr && twin->equalsNoCase(pair.value));
    });
}

bool KxURIEquivalence::sMatchHeaders(const KxSharedParameters& one, const KxSharedParameters& other) {
    const auto& [shorter, longer] = inOrder(one, other);
    if (shorter.empty() != longer.empty()) {
        return false;
    }
    return std::all_of(shorter.begin(), shorter.end(), [&all = longer](const KxParameters::Pair& pair) {
        const KxString* const twin = all.findValue(pair.name);
        return twin != nullptr && *twin == pair.value;
    });
}
