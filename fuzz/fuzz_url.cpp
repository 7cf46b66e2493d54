// URIs. The first byte chooses the reader: bit 0 standalone; bits 1 and 2 the factory, KxSipURL, KxTelURL or KxURI. Law:
// what was printed reads and prints as itself; a copy prints as its original; a stream that dribbles reads as memory.

#include "fuzz/FuzzSupport.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxTelURL.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace {

enum class Reader { Factory, SipURL, TelURL, URI };

KxHandle<KxURI> read(KxInputStream& in, Reader reader, bool standalone) {
    KxHandle<KxURI> uri;
    switch (reader) {
    case Reader::Factory:
        return KxURI::sConstructFrom(in, standalone);
    case Reader::SipURL:
        uri = standalone ? KxMake<KxSipURL>("sip:h") : KxMake<KxSipURL>();
        break;
    case Reader::TelURL:
        uri = KxMake<KxTelURL>();
        break;
    case Reader::URI:
        uri = KxHandle<KxURI>(new KxURI(nullptr));
    }
    uri->parse(in);
    return uri;
}

struct Outcome {
    KxHandle<KxURI> uri;
    std::string text; ///< As printed, or why there is none.
};

Outcome outcomeOf(KxInputStream& in, Reader reader, bool standalone) {
    try {
        Outcome outcome{read(in, reader, standalone), {}};
        outcome.text = outcome.uri->getString().view();
        return outcome;
    } catch (const KxHandle<KxException>& failure) {
        return {{}, std::string("! ").append(failure->getExceptionMessage().view())};
    }
}

bool hasAnyOf(std::string_view text, std::string_view characters) {
    return text.find_first_of(characters) != std::string_view::npos;
}

// What follows are the ways in which a URI is laid down to be printed so that it reads as another.

bool hasOddQuotes(std::string_view text) {
    return std::count(text.begin(), text.end(), '"') % 2 != 0;
}

/** A quote left open in a value that took an earlier value's place takes in the parameters behind it now. */
bool hasOddQuotes(const KxParameters& list) {
    return list.size() > 1 && std::any_of(list.begin(), list.end(), [](const KxParameters::Pair& pair) {
               const std::string text = std::string(pair.name.view()) + '=' + std::string(pair.value.view());
               return hasOddQuotes(text) || hasAnyOf(text, "\\");
           });
}

/** A quote that was in front of an "@" and is not printed (it was in a port, which is printed as a number) hid it. */
bool showsUserPart(std::string_view printed) {
    bool quoted = false;
    const auto* const at = std::find_if(printed.begin(), printed.end(), [&quoted](char c) {
        quoted ^= c == '"';
        return c == '@' && !quoted;
    });
    return at != printed.end();
}

/** A value that was replaced took its quotes along, and a blank that one of them kept stands alone now. */
bool showsBlank(const KxParameters& headers) {
    bool quoted = false;
    const auto shows = [&quoted](char c) {
        quoted ^= c == '"';
        return c == ' ' && !quoted;
    };
    return std::any_of(headers.begin(), headers.end(), [&shows](const KxParameters::Pair& pair) {
        const std::string text = std::string(pair.name.view()) + std::string(pair.value.view());
        return std::any_of(text.begin(), text.end(), shows);
    });
}

bool changes(const KxSipURL& url, std::string_view printed) {
    if (url.getUser().empty() && showsUserPart(printed)) {
        return true;
    }
    // Header values are decoded when read; of what is not escaped again, "%" is decoded once more, and names are not
    // escaped at all, so that an "@" in one makes a user part of what stands before it.
    for (const KxParameters::Pair& header : *url.getHeaders()) {
        if (hasAnyOf(header.name, "%@;=") || hasAnyOf(header.value, "%")) {
            return true;
        }
    }
    // Quotes pair only in the user, but hide an "@" wherever they stand in front of it.
    if (hasOddQuotes(url.getUser().view()) || hasOddQuotes(url.getUserPassword().view())) {
        return true;
    }
    // An "@" in front of the scheme is dropped, but what delimits URLs is text as long as a user is expected; so it is
    // where a colon behind the host has emptied the user, and there quotes go on behind a line end.
    return hasAnyOf(url.getHost(), ";,?\"") || hasAnyOf(url.getUser(), "\n") || hasOddQuotes(*url.getParameters()) ||
           showsBlank(*url.getHeaders());
}

bool changes(const KxTelURL& url, std::string_view printed) {
    // A "<" begins the number anew but keeps the parameters' "+" and ";" in it; a scheme of fewer letters than "tel"
    // leaves room for a number that is too long behind "tel:".
    const std::size_t parameters = url.hasParameters() ? url.getParameters()->getString().length() + 1 : 0;
    const std::string_view number = printed.substr(4, printed.size() - 4 - parameters);
    return printed.size() > 1023 || number.find('+', 1) != std::string_view::npos || hasAnyOf(number, ";") ||
           hasOddQuotes(*url.getParameters());
}

bool changes(const KxURI& uri, std::string_view printed) {
    if (uri.isSipURL()) {
        return changes(static_cast<const KxSipURL&>(uri), printed);
    }
    if (const auto* const tel = dynamic_cast<const KxTelURL*>(&uri)) {
        return changes(*tel, printed);
    }
    // Two brackets in front lose one a round; a scheme behind a tab is not looked at, but printed without the tab it is.
    std::string letters(printed.substr(0, 64));
    std::erase_if(letters, [](char c) { return c == ' ' || c == '<'; });
    const std::string_view scheme = std::string_view(letters).substr(0, 3);
    return printed[0] == '<' || KxAscii::equalsNoCase(scheme, "sip") || KxAscii::equalsNoCase(scheme, "tel");
}

void check(const Outcome& first, Reader reader) {
    const KxURI& uri = *first.uri;
    const KxHandle<KxURI> copy(uri.clone());
    KxByteArrayOutputStream out(16);
    copy->serialize(out);
    if (out.view() != first.text || copy->isSipURL() != uri.isSipURL()) {
        fail("a copy prints as its original", first.text, out.view());
    }
    if (changes(uri, first.text)) {
        return;
    }
    KxByteArrayInputStream in{std::string_view(first.text)};
    const Outcome second = outcomeOf(in, reader, true);
    if (second.text != first.text) {
        fail("what was printed prints again", first.text, second.text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool standalone = (data[0] & 1) != 0;
    const auto reader = static_cast<Reader>(data[0] >> 1 & 3);
    const auto block = std::make_unique<char[]>(size - 1); // flush, so that one byte too far is seen
    std::copy(data + 1, data + size, block.get());
    const std::string_view text(block.get(), size - 1);
    KxByteArrayInputStream in(text);
    const Outcome first = outcomeOf(in, reader, standalone);
    if (text.find('\n') == std::string_view::npos) { // a stream that dribbles is read a line at a time
        Dribble dribble(text);
        const Outcome slow = outcomeOf(dribble, reader, standalone);
        if (slow.text != first.text) {
            fail("a stream that dribbles reads as memory", first.text, slow.text);
        }
    }
    if (!first.uri.isNil()) {
        check(first, reader);
    }
    return 0;
}
