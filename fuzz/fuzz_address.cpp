// Name-addresses. Law: one prints as its display name and its URI in brackets; what was printed reads and prints as itself;
// a copy, and one made of the parts, prints as its original; in brackets one reads the same in a header and on its own; a
// stream that dribbles reads as memory does.

#include "fuzz/URIRound.h"
#include "sipobject/address/KxSipNameAddress.h"

namespace {

using Address = KxHandle<KxSipNameAddress>;

/** The name-address as a header has it, or, standalone, as a text. */
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

/** A display name is one character longer when it is written: it was right in front of the "<". */
bool changes(const KxSipNameAddress& address) {
    return address.getDisplayName().length() >= 1023 || changes(*address.getURI());
}

/** The parts tell what is printed. */
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

/** What is done to a copy leaves the original as it is. */
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
    if (!hasAnyOf(text, "\n")) { // a stream that dribbles is read a line at a time
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
        if (!changes(*read)) {
            const Block again(printed);
            KxByteArrayInputStream stream(again.view());
            Address second;
            same("what was printed prints again", printed, readFrom(stream, second));
        }
    }
    return 0;
}
