// Tel URLs. Laws: a URL reads as with the plain reader: by its class, by the factory and as a URI of any scheme. It is
// printed as its parts. The printed text is read and printed as itself. A copy is printed as its original and equals
// it. A stream that delivers one byte at a time reads as memory does.

#include "fuzz/URIRound.h"

namespace {

/** The parts of a tel URL without "<", found by searching for delimiters instead of reading character by character. */
class PlainTelURL {
public:
    explicit PlainTelURL(std::string_view text) {
        const std::size_t end = std::min(text.find_first_of("\n>"), text.size());
        read = std::min(end + 1, text.size());
        kept = end;
        const std::string_view url = text.substr(0, end);
        const std::size_t colon = url.find(':');
        const std::size_t semicolon = url.find(';');
        if (colon > semicolon) { // no colon so far: the ";" ends it
            read = semicolon + 1;
            kept = semicolon;
            return;
        }
        if (colon != std::string_view::npos) {
            setNumber(std::string(
                url.substr(colon + 1, semicolon == std::string_view::npos ? semicolon : semicolon - colon - 1)));
            std::string rest(semicolon == std::string_view::npos ? "" : url.substr(semicolon + 1));
            std::erase(rest, '\r');
            if (!isRFC()) {
                std::erase(rest, ':');
            }
            parameters.parse(KxAscii::trim(rest));
        }
    }
    std::string printed() const {
        return "tel:" + number + (parameters.empty() ? "" : ";") + std::string(parameters.getString().view());
    }

    std::string number;
    bool isGlobal = false;
    KxParameters parameters;
    std::size_t read; ///< Number of bytes of the text that were read.
    std::size_t kept; ///< Upper bound of the number of these that were collected.

private:
    /** A "+" makes the number global; any further "+" is dropped. */
    void setNumber(std::string text) {
        std::erase_if(text, [](char c) { return c == ':' || c == '\r'; });
        const std::size_t plus = text.find('+');
        isGlobal = plus != std::string::npos;
        if (isGlobal) {
            text.erase(std::remove(text.begin() + static_cast<std::ptrdiff_t>(plus) + 1, text.end(), '+'), text.end());
        }
        number = KxAscii::trim(text);
    }
};

void checkPlain(const KxTelURL& url, std::string_view text, std::size_t left) {
    const PlainTelURL plain(text);
    const KxString printed = url.getString();
    same("a URL reads as it does the plain way", plain.printed(), printed);
    if (url.isGlobalNumber() != plain.isGlobal || left != text.size() - plain.read) {
        fail("a URL is read as far, and as global, as it is the plain way", text, printed);
    }
    const char* const number = url.getPhoneNumber();
    same("a number is what is printed of it", number == nullptr ? "" : number, plain.number.c_str());
}

void checkParameters(KxTelURL& url) {
    const KxHandle<KxParameters> list = url.getParameters();
    const KxHandle<KxTelURL> copy(url.clone());
    for (const KxParameters::Pair& pair : *list) {
        same("a parameter is found by its name", url.getParameter(pair.name), pair.value);
    }
    const std::string text = written(url);
    copy->clearParameters();
    same("a copy has a list of its own", text, written(url));
    if (url.hasParameters() == (*copy == url) || copy->hasParameters()) {
        fail("a URL without its parameters is another", text, written(*copy));
    }
}

void check(KxTelURL& url, std::string_view text) {
    checkWriting(url, text);
    const KxHandle<KxTelURL> copy(url.clone());
    if (!(*copy == url) || copy->isGlobalNumber() != url.isGlobalNumber() || url.isSipURL() || url.hasHeaders()) {
        fail("a copy is like its original", text, written(*copy));
    }
    if (isRFC() || !changes(url, text)) {
        const Block block(text);
        KxTelURL again;
        KxByteArrayInputStream in(block.view());
        again.parse(in);
        same("what was printed prints again", text, written(again));
    }
    checkParameters(url);
}

/** Checks the text as a URI of any scheme: it is read without a leading bracket. */
void checkAnyScheme(std::string_view text) {
    KxURI uri(nullptr);
    KxByteArrayInputStream in(text);
    const std::string read = outcomeOf([&] {
        uri.parse(in);
        return written(uri);
    });
    text.remove_prefix(isRFC() ? std::min(text.find_first_not_of(" \t\r\n\v\f"), text.size()) : 0);
    text.remove_prefix(text.starts_with('<') ? 1 : 0);
    const std::size_t colon = text.find(':');
    std::string plain = "! INVALID URI";
    if (colon != std::string_view::npos) {
        const std::string_view data = text.substr(colon + 1);
        std::string scheme(KxAscii::trim(text.substr(0, colon)));
        std::erase(scheme, '\r');
        plain = scheme + ':' + std::string(KxAscii::trim(data.substr(0, data.find_first_of(">\r\n"))));
    }
    same("a URI of any scheme is its scheme and the text after it", plain, read);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Block block(data, size);
    const std::string_view text = block.view();
    checkAnyScheme(text);
    KxTelURL url;
    KxByteArrayInputStream in(text);
    const auto read = [](KxTelURL& into, KxInputStream& from) {
        return outcomeOf([&] {
            into.parse(from);
            return written(into);
        });
    };
    const std::string first = read(url, in);
    if (!hasAnyOf(text, "\n")) { // a stream that is not whole is read one line at a time
        Dribble dribble(text);
        KxTelURL slow;
        same("a stream that dribbles reads as memory", first, read(slow, dribble));
    }
    std::string letters(text.substr(0, text.find_first_not_of(" <TELtel")));
    const bool isScheme = !isRFC() || text.substr(letters.size()).starts_with(':'); // not of "tel2:"
    std::erase(letters, ' ');
    if (isScheme && KxAscii::equalsNoCase(letters, "tel")) {
        KxByteArrayInputStream again(text);
        const std::string made = outcomeOf([&] { return written(*KxURI::sConstructFrom(again, false)); });
        if (!isRFC() || made[0] != '!' || first[0] != '!') { // for "tel :" there are two reasons
            same("the factory reads a tel URL as its class does", first, made);
        }
    }
    if (first.starts_with('!')) {
        if (!isRFC() && !hasAnyOf(text, "<") && PlainTelURL(text).kept < 1024) {
            fail("only what is too long is refused", first, text);
        }
        return 0;
    }
    if (!hasAnyOf(text.substr(0, text.size() - in.available()), "<")) {
        checkPlain(url, text, in.available());
    }
    check(url, first);
    return 0;
}
