// Edits of very long messages, 64 KB and 1 MB. A loop over a whole message may cost 20 times as much as its parse.

#include "bench/Hostile.h"
#include "bench/HostileEdits.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/headers/KxSipWWWAuthenticateHeader.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

namespace {

using Names = std::vector<std::string>;
/** Edits the whole message; returns the number of edits. */
using Edit = std::function<std::size_t()>;

struct EditCase {
    const char* name;
    std::string_view first; ///< The message is made of the three texts as in hostile_bench.cpp.
    std::string_view piece;
    std::string_view last;
    Edit (*prepare)(KxSipMessage& message); ///< Makes the edit; not timed.
};

KxSipHeader& lastOf(const KxHandle<KxSipHeader>& chain) {
    KxSipHeader* header = chain.get();
    while (!header->getNext().isNil()) {
        header = header->getNext().get();
    }
    return *header;
}

std::vector<KxHandle<KxSipHeader>> valuesOf(const KxHandle<KxSipHeader>& chain) {
    std::vector<KxHandle<KxSipHeader>> values;
    for (KxHandle<KxSipHeader> value = chain; !value.isNil(); value = value->getNext()) {
        values.push_back(value);
    }
    return values;
}

Names unknownNamesOf(const KxSipMessage& message) {
    Names names;
    for (const KxHandle<KxSipHeader>& value : valuesOf(message.getHeaderByID(KxHeaderIDs::kUnknown))) {
        names.emplace_back(value->getToken().view());
    }
    return names;
}

Names namesOf(const KxParameters& list) {
    Names names;
    for (const KxParameters::Pair& pair : list) {
        names.emplace_back(pair.name.view());
    }
    return names;
}

enum class Order { Forward, Backward, Random };

Names inOrder(Names names, Order order) {
    if (order == Order::Backward) {
        std::reverse(names.begin(), names.end());
    } else if (order == Order::Random) {
        std::shuffle(names.begin(), names.end(), std::mt19937(1));
    }
    return names;
}

template <class Operation>
Edit forEach(Names names, Operation operation) {
    return [names = std::move(names), operation] {
        return static_cast<std::size_t>(std::count_if(names.begin(), names.end(), operation));
    };
}

/** `while (message->removeHeader(name))` */
template <char... kName>
Edit removeAllOf(KxSipMessage& message) {
    return [&message] {
        constexpr char kText[] = {kName..., 0};
        std::size_t count = 0;
        while (message.removeHeader(kText)) {
            ++count;
        }
        return count;
    };
}

template <Order kOrder>
Edit removeUnknown(KxSipMessage& message) {
    return forEach(inOrder(unknownNamesOf(message), kOrder),
                   [&message](const std::string& name) { return message.removeHeader(name); });
}

Edit findUnknown(KxSipMessage& message) {
    return forEach(unknownNamesOf(message),
                   [&message](const std::string& name) { return !message.getHeader(name).isNil(); });
}

/** Adds every value of a kind to another message, one at a time. */
template <HeaderID kID, class Add>
Edit copyInto(KxSipMessage& message, Add add) {
    return [values = valuesOf(message.getHeaderByID(kID)), other = parseMessage(requestWith("")), add] {
        for (const KxHandle<KxSipHeader>& value : values) {
            add(*other, value);
        }
        return values.size();
    };
}

template <HeaderID kID, bool kFirst>
Edit addSingle(KxSipMessage& message) {
    return copyInto<kID>(
        message, [](KxSipMessage& other, const KxHandle<KxSipHeader>& value) { other.addSingleHeader(value, kFirst); });
}

template <HeaderID kID, bool kFirst>
Edit addClone(KxSipMessage& message) {
    return copyInto<kID>(message, [](KxSipMessage& other, const KxHandle<KxSipHeader>& value) {
        other.addHeader(KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(value->clone())), kFirst);
    });
}

/** Moves the top Route to the end, until the first one is at the top again. */
Edit rotateRoutes(KxSipMessage& message) {
    return [&message, count = valuesOf(message.getHeaderByID(KxHeaderIDs::kRoute)).size()] {
        for (std::size_t i = 0; i < count; ++i) {
            const KxHandle<KxSipHeader> top = message.getHeaderByID(KxHeaderIDs::kRoute);
            message.removeHeader("Route");
            message.addHeader(top, false);
        }
        return count;
    };
}

const KxSipURL& urlOf(const KxSipMessage& message) {
    return static_cast<const KxSipURL&>(*message.getContactHeader()->getNameAddress()->getURL());
}
KxHandle<KxParameters> ofURL(const KxSipMessage& message) {
    return urlOf(message).getParameters();
}
KxHandle<KxParameters> headersOfURL(const KxSipMessage& message) {
    return urlOf(message).getHeaders();
}
KxHandle<KxParameters> ofContact(const KxSipMessage& message) {
    return message.getContactHeader()->getParameters();
}
KxHandle<KxParameters> ofVia(const KxSipMessage& message) {
    return static_cast<KxSipViaHeader&>(lastOf(message.getViaHeader())).getParameters();
}

template <KxHandle<KxParameters> (*kList)(const KxSipMessage&), Order kOrder>
Edit removeParameters(KxSipMessage& message) {
    const KxHandle<KxParameters> list = kList(message);
    return forEach(inOrder(namesOf(*list), kOrder),
                   [list](const std::string& name) { return list->removeValue(name); });
}

/** Removes each parameter, adds it again at the end and looks it up; then removes all parameters. */
template <KxHandle<KxParameters> (*kList)(const KxSipMessage&)>
Edit mixParameters(KxSipMessage& message) {
    const KxHandle<KxParameters> list = kList(message);
    const Names names = inOrder(namesOf(*list), Order::Random);
    const Edit mix = forEach(names, [list](const std::string& name) {
        list->removeValue(name);
        list->setValue(name, KxString("again"));
        return list->isPresent(name);
    });
    return [mix, remove = forEach(names, [list](const std::string& name) { return list->removeValue(name); })] {
        return mix() + remove();
    };
}

/** Removes the second parameter until one is left, iterating from the beginning of the list each time. */
template <KxHandle<KxParameters> (*kList)(const KxSipMessage&)>
Edit removeSecond(KxSipMessage& message) {
    return [list = kList(message)] {
        std::size_t count = 0;
        while (list->size() > 1 && list->removeValue(std::next(list->begin())->name)) {
            ++count;
        }
        return count;
    };
}

/** Adds properties to a challenge and then replaces them. */
Edit setProperties(KxSipMessage& message) {
    const auto& header =
        static_cast<const KxSipAuthenticateHeader&>(*message.getHeaderByID(KxHeaderIDs::kWWWAuthenticate));
    const KxHandle<KxSipDigestChallengeInfo> challenge(
        static_cast<KxSipDigestChallengeInfo*>(header.getChallenge().get()));
    Names names;
    for (std::size_t i = 0; i < 5000; ++i) {
        names.push_back("p" + std::to_string(i));
    }
    return [set = forEach(names, [challenge](const std::string& name) {
                challenge->setProperty(name, KxString(name));
                return !challenge->getProperty(name).isNil();
            })] { return set() + set(); };
}

constexpr EditCase kEdits[] = {
    {"remove/rare_among_unknown", "", "a:1\r\na:1\r\na:1\r\nb:1\r\n", "", removeAllOf<'b'>},
    {"remove/last_among_unknown", "", "a:1\r\n", "b:1\r\nb:2\r\n", removeAllOf<'b'>},
    {"remove/unknown_of_one_name", "", "b:1\r\n", "", removeAllOf<'b'>},
    {"remove/unknown_from_the_front", "", "q#:1\r\n", "", removeUnknown<Order::Forward>},
    {"remove/unknown_from_the_back", "", "q#:1\r\n", "", removeUnknown<Order::Backward>},
    {"remove/unknown_in_any_order", "", "q#:1\r\n", "", removeUnknown<Order::Random>},
    {"remove/vias", "", "Via:a/b/UDP c\r\n", "", removeAllOf<'V', 'i', 'a'>},
    {"remove/routes", "", "Route:<sip:a>\r\n", "", removeAllOf<'R', 'o', 'u', 't', 'e'>},
    {"remove/values_of_a_line", "Allow:a", ",a", "\r\n", removeAllOf<'A', 'l', 'l', 'o', 'w'>},
    {"move/routes_to_the_end", "", "Route:<sip:a>\r\n", "", rotateRoutes},
    {"find/unknown", "", "q#:1\r\n", "", findUnknown},
    {"copy/single_unknown", "", "q:1\r\n", "", addSingle<KxHeaderIDs::kUnknown, false>},
    {"copy/single_unknown_that_differ", "", "q#:1\r\n", "", addSingle<KxHeaderIDs::kUnknown, false>},
    {"copy/single_unknown_in_front", "", "q#:1\r\n", "", addSingle<KxHeaderIDs::kUnknown, true>},
    {"copy/single_vias", "", "v:a/b/UDP c\r\n", "", addSingle<KxHeaderIDs::kVia, false>},
    {"copy/clones_of_unknown", "", "q#:1\r\n", "", addClone<KxHeaderIDs::kUnknown, false>},
    {"copy/clones_of_unknown_in_front", "", "q#:1\r\n", "", addClone<KxHeaderIDs::kUnknown, true>},
    {"copy/clones_of_supported", "k: a", ",a", "\r\n", addClone<KxHeaderIDs::kSupported, false>},
    {"parameters/of_url_from_the_front", "m: <sip:a", ";#", ">\r\n", removeParameters<ofURL, Order::Forward>},
    {"parameters/of_url_from_the_back", "m: <sip:a", ";#", ">\r\n", removeParameters<ofURL, Order::Backward>},
    {"parameters/of_url_in_any_order", "m: <sip:a", ";#", ">\r\n", removeParameters<ofURL, Order::Random>},
    {"parameters/of_url_second_first", "m: <sip:a", ";#", ">\r\n", removeSecond<ofURL>},
    {"parameters/of_url_removed_and_set", "m: <sip:a", ";#", ">\r\n", mixParameters<ofURL>},
    {"parameters/headers_of_url", "m: <sip:a?a=b", ";#=c", ">\r\n", removeParameters<headersOfURL, Order::Random>},
    {"parameters/of_contact", "m: <sip:a>", ";#", "\r\n", removeParameters<ofContact, Order::Random>},
    {"parameters/of_via", "v: a/b/UDP c", ";#=", "\r\n", removeParameters<ofVia, Order::Random>},
    {"parameters/of_via_removed_and_set", "v: a/b/UDP c", ";#=", "\r\n", mixParameters<ofVia>},
    {"parameters/of_challenge_set", "WWW-Authenticate: Digest a=\"b\"\r\n", "a:1\r\n", "", setProperties},
};

using Microseconds = std::chrono::duration<double, std::micro>;

template <class Operation>
void keepBest(double& best, Operation operation) {
    const auto before = std::chrono::steady_clock::now();
    operation();
    const double time = Microseconds(std::chrono::steady_clock::now() - before).count();
    best = best == 0 ? time : std::min(best, time);
}

} // namespace

bool compareHostileEdits() {
    constexpr double kMost = 20;
    constexpr int kRounds = 5;
    constexpr std::chrono::seconds kPatience(2); // limits the time for an edit that will fail anyway
    int failures = 0;
    std::printf("%-34s%9s%9s%13s%13s%9s\n", "edit", "bytes", "edits", "parse, us", "edit, us", "times");
    for (const EditCase& edited : kEdits) {
        for (const std::size_t size : {kHostileSize, 16 * kHostileSize}) {
            const std::string bytes = requestWith(filled(edited.first, edited.piece, edited.last, size));
            double parse = 0;
            double edit = 0;
            std::size_t edits = 0;
            const auto begin = std::chrono::steady_clock::now();
            for (int i = 0; i < kRounds && std::chrono::steady_clock::now() - begin < kPatience; ++i) {
                KxHandle<KxSipMessage> message;
                keepBest(parse, [&] { message = parseMessage(bytes); });
                const Edit run = edited.prepare(*message);
                keepBest(edit, [&] { edits = run(); });
            }
            const bool failed = edits == 0 || edit > kMost * parse;
            failures += failed ? 1 : 0;
            std::printf("%-34s%9zu%9zu%13.0f%13.0f%9.1f%s\n", edited.name, bytes.size(), edits, parse, edit,
                        edit / parse, failed ? "  TOO MUCH" : "");
            std::fflush(stdout);
            if (failed) {
                break; // an edit that costs too much at 64 KB takes minutes at 1 MB
            }
        }
    }
    std::printf("%d edits cost more than %.0f times the parse\n", failures, kMost);
    return failures == 0;
}
