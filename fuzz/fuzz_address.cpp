// Name-addresses. Laws: a name-address is printed as its display name and its URI in brackets. The printed text is read
// and printed as itself. A copy, and a name-address made of the parts, is printed as its original. With brackets, it
// reads the same in a header and on its own. A stream that delivers one byte at a time reads as memory does.

#include "fuzz/URIRound.h"
#include "sipobject/address/KxSipNameAddress.h"

namespace {

using Address = KxHandle<KxSipNameAddress>;

/** Reads a name-address as in a header. */
std::string readFrom(KxInputStream& in, Address& address) {
    return outcomeOf([&] {
        address = KxSipNameAddress::sConstructFrom(in);
        return written(*address);
    });
}

std::string readText(const std::string& text, Address& address) {
    return outcomeOf([&] {
        address = KxMake<KxSipNameAddress>(text.c_str());
        return written(*address);
    });
}

/** A display name that was directly before the "<" is one character longer when it is written. */
bool changes(const KxSipNameAddress& address) {
    return address.getDisplayName().length() >= 1023 || changes(*address.getURI());
}

/** Checks that the parts determine the printed text. */
void checkParts(const KxSipNameAddress& address, std::string_view text) {
    const KxString& name = address.getDisplayName();
    const KxURI& uri = *address.getURI();
    const std::string plain = std::string(name.view()) + (name.empty() ? "<" : " <") + written(uri) + '>';
    same("a name-address is printed as its parts", plain, text);
    same("its URL is its URI as text", written(uri), address.getURLString());
    if (address.getURL().isNil() == uri.isSipURL() || (!name.empty() && !address.hasBrackets())) {
        fail("only a SIP URL is one, and only what has brackets a name", text, name);
    }
    const auto made = KxMake<KxSipNameAddress>(name, address.getURI());
    same("one made of the parts is printed as its original", text, written(*made));
    if (made->getURI().get() == &uri) {
        fail("one made of the parts has a URI of its own", text, written(*made));
    }
}

/** Checks that changes to a copy leave the original unchanged. */
void checkCopy(const KxSipNameAddress& address, std::string_view text) {
    const Address copy(address.clone());
    if (copy->hasBrackets() != address.hasBrackets()) {
        fail("a copy is like its original", text, written(*copy));
    }
    copy->setBrackets(!copy->hasBrackets());
    same("brackets are printed whatever was read", text, written(*copy));
    if (const KxHandle<KxSipURL> url = copy->getURL(); !url.isNil()) {
        url->setParameter("changed", KxString("1"));
        url->setTransportParam(KxSocketImpl::TLS);
        url->clearHeaders();
    }
    same("a copy has a URI of its own", text, written(address));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Block block(data, size);
    const std::string_view text = block.view();
    KxByteArrayInputStream in(text);
    Address address;
    const std::string first = readFrom(in, address);
    if (!hasAnyOf(text, "\n")) { // a stream that is not whole is read one line at a time
        Dribble dribble(text);
        Address slow;
        same("a stream that dribbles reads as memory", first, readFrom(dribble, slow));
        same("a stream that dribbles is read as far as memory", restOf(in), restOf(dribble));
    }
    Address alone;
    const std::string standalone = readText(std::string(text.substr(0, text.find('\0'))), alone);
    if (text.find('\0') == std::string_view::npos && !address.isNil() && address->hasBrackets()) {
        same("in brackets one reads the same in a header and on its own", first, standalone);
    }
    for (const Address& read : {address, alone}) {
        if (read.isNil()) {
            continue;
        }
        const std::string printed = written(*read);
        checkParts(*read, printed);
        checkWriting(*read, printed);
        checkCopy(*read, printed);
        if (isRFC() || !changes(*read)) {
            const Block again(printed);
            KxByteArrayInputStream stream(again.view());
            Address second;
            same("what was printed prints again", printed, readFrom(stream, second));
        }
    }
    return 0;
}
