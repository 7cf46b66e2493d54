// URIs. The first byte chooses the reader: bit 0 standalone; bits 1 and 2 the factory, KxSipURL, KxTelURL or KxURI.
// Laws: the printed text is read and printed as itself. A copy is printed as its original. A stream that delivers one
// byte at a time reads as memory does. Logging changes nothing, although no URL is then read the short way.

#include "fuzz/Traced.h"
#include "fuzz/URIRound.h"

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
    std::string text; ///< The URI as printed, or the reason why there is none.
};

Outcome readWith(KxInputStream& in, Reader reader, bool standalone) {
    try {
        Outcome outcome{read(in, reader, standalone), {}};
        outcome.text = outcome.uri->getString().view();
        return outcome;
    } catch (const KxHandle<KxException>& failure) {
        return {{}, std::string("! ").append(failure->getExceptionMessage().view())};
    }
}

void check(const Outcome& first, Reader reader) {
    const KxURI& uri = *first.uri;
    checkWriting(uri, first.text);
    const bool isExact = isRFC() && reader != Reader::URI; // which takes any text
    if (!isExact && changes(uri, first.text)) {
        return;
    }
    const Block block(first.text);
    KxByteArrayInputStream in(block.view());
    same("what was printed prints again", first.text, readWith(in, reader, true).text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool standalone = (data[0] & 1) != 0;
    const auto reader = static_cast<Reader>(data[0] >> 1 & 3);
    const Block block(data + 1, size - 1);
    KxByteArrayInputStream in(block.view());
    const Outcome first = readWith(in, reader, standalone);
    if (!hasAnyOf(block.view(), "\n")) { // a stream that is not whole is read one line at a time
        Dribble dribble(block.view());
        same("a stream that dribbles reads as memory", first.text, readWith(dribble, reader, standalone).text);
    }
    if (size % 8 == 0) { // logging is slow
        const Traced traced;
        KxByteArrayInputStream again(block.view());
        same("logging changes nothing", first.text, readWith(again, reader, standalone).text);
    }
    if (!first.uri.isNil()) {
        check(first, reader);
    }
    return 0;
}
