// Digest challenges, credentials and the digest itself. The first byte chooses: 0 a challenge, 1 credentials, 2 the
// credentials that a client makes of the text's lines. Laws: a list reads as with the plain reader, and from a stream
// that delivers one byte at a time as from memory. The written text is read and written as itself. A copy is written as
// its original. The credentials that a client makes are valid, with their own password only.

#include "fuzz/FuzzSupport.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "tests/sipobject/support/PlainPropertyList.h"
#include "util/KxHexEncoding.h"

#include <initializer_list>
#include <iterator>

namespace {

template <class Info>
struct Outcome {
    explicit Outcome(KxInputStream& in) {
        try {
            info.parse(in);
            isRead = true;
            write();
        } catch (const KxHandle<KxException>& failure) {
            text = failure->getExceptionMessage().view();
        }
    }
    void write() {
        KxByteArrayOutputStream out(16);
        info.serialize(out);
        text = out.view();
        isWritten = true;
    }
    Info info;
    bool isRead = false;
    bool isWritten = false; ///< Credentials without a response are not written unless they name an MD5 algorithm.
    std::string text;       ///< The list as written, or the reason why there is none.
};

// The following functions detect lists whose written form, by design, reads as another list.

/** A line feed ends reading at the next value. Names, and values that are written without quotes, lose the blanks and
    commas that quotes protected. Commas and "=" may have exceeded the limit, after which nothing else may follow. */
bool changes(const PlainPropertyList& plain, std::initializer_list<std::string_view> bare) {
    for (const KxParameters::Pair& property : plain.list) {
        const bool isBare = std::any_of(bare.begin(), bare.end(),
                                        [&](std::string_view name) { return property.name.equalsNoCase(name); });
        if (hasAnyOf(property.name, " \n") || hasAnyOf(property.value, isBare ? " ,\n" : "\n")) {
            return true;
        }
    }
    return plain.buffer.size() > 900;
}

bool changes(const KxSipDigestChallengeInfo&, const PlainPropertyList& plain) {
    // The last property needs a name and a value. Its name is written in lower case, so that another property may have
    // been the last one before.
    const KxParameters::Pair& last = *std::next(plain.list.begin(), static_cast<std::ptrdiff_t>(plain.list.size()) - 1);
    return changes(plain, {"algorithm", "stale", "uri"}) || last.name.empty() || last.value.empty() ||
           last.name.lower() != last.name;
}

bool changes(const KxSipDigestCredentialsInfo& credentials, const PlainPropertyList& plain) {
    const auto isSet = [&](const char* name) { return !credentials.getProperty(name).isNil(); };
    const char* const last = isSet("qop")         ? "cnonce"
                             : isSet("opaque")    ? "opaque"
                             : isSet("algorithm") ? "algorithm"
                                                  : "uri";
    return changes(plain, {"algorithm", "nc"}) || credentials.getProperty(last).empty();
}

template <class Info>
void checkPlain(const Outcome<Info>& first, const PlainPropertyList& plain, std::size_t expected,
                std::string_view unread) {
    if (!first.isRead) {
        same("a list is refused as it is the plain way", first.text, plain.failure);
        return;
    }
    if (!plain.failure.empty() || unread.size() != expected) {
        fail("a list is read as far as it is the plain way", unread, plain.failure);
    }
    for (const KxParameters::Pair& property : plain.list) {
        same("a list reads as it does the plain way", property.value, first.info.getProperty(property.name));
    }
}

template <class Info>
void checkReading(std::string_view text) {
    KxByteArrayInputStream in(text);
    const Outcome<Info> first(in);
    Dribble dribble(text);
    const Outcome<Info> slow(dribble);
    same("a stream that dribbles reads as memory", first.text, slow.text);
    const PlainPropertyList plain(text, false);
    if (!isRFC()) { // the plain reader knows the classic grammar only
        checkPlain(first, plain, text.size() - plain.read, in.window());
    }
    if (!first.isWritten || (isRFC() && first.text.empty())) { // of a password only, which is not written
        return;
    }
    checkWriting(first.info, first.text);
    KxByteArrayInputStream again{std::string_view(first.text)};
    const Outcome<Info> second(again);
    if (second.text != first.text && (isRFC() || !changes(first.info, plain))) {
        fail("what was written is written again", first.text, second.text);
    }
}

/** The lines of the text, followed by empty lines. */
class Lines {
public:
    explicit Lines(std::string_view text) : m_rest(text) {}
    KxString next() {
        const std::string_view line = m_rest.substr(0, m_rest.find('\n'));
        m_rest.remove_prefix(line.size() == m_rest.size() ? line.size() : line.size() + 1);
        m_isPlain = m_isPlain && !hasAnyOf(line, "\" ,") && !(isRFC() && hasControls(line));
        m_size += line.size();
        return KxString(line);
    }
    /** Whether the lines taken read as they are written, with quotes or without. */
    bool isPlain() const { return m_isPlain && m_size < 800; }

private:
    static bool hasControls(std::string_view line) {
        return std::any_of(line.begin(), line.end(), [](char c) { return (c >= 0 && c < ' ') || c == 0x7f; });
    }

    std::string_view m_rest;
    bool m_isPlain = true;
    std::size_t m_size = 0;
};

void validate(KxSipDigestCredentialsInfo& credentials, const KxString& user, const KxString& password,
              const KxString& realm, std::string_view text) {
    KxString other(password);
    other.append("x");
    // With MD5-sess, if the raw digest begins with a zero byte (1 in 256 does), nothing of the password is left in A1.
    const bool isSess = credentials.getProperty("algorithm") == "MD5-sess";
    if ((credentials.validate(user, other, realm) && !isSess) || !credentials.validate(user, password, realm)) {
        fail("what a client made validates, with its own password only", text, credentials.getProperty("response"));
    }
}

void checkDigest(std::string_view text) {
    Lines lines(text);
    const auto challenge = KxMake<KxSipDigestChallengeInfo>(lines.next());
    challenge->setProperty("nonce", lines.next());
    challenge->setProperty("algorithm", lines.next());
    const KxString options = lines.next();
    challenge->setQopOptions(options);
    const KxString user = lines.next();
    const KxString password = lines.next();
    const KxString method = lines.next();
    const KxString body = lines.next();
    const KxString realm = challenge->getRealm();
    KxHandle<KxSipDigestCredentialsInfo> made;
    try {
        made = KxMake<KxSipDigestCredentialsInfo>(challenge, user, password);
    } catch (const KxHandle<KxException>&) {
        return;
    }
    made->setMethod(method);
    made->setEntityBody(body.c_str());
    KxString cnonce = lines.next();
    cnonce.append("c"); // it is written last, and must not be empty if it is to be read
    made->setQop(options.view().substr(0, 4) == "auth" ? options : KxString("auth-int"), cnonce, 7);
    KxByteArrayOutputStream out;
    made->serialize(out);
    const bool isToken = std::all_of(options.view().begin(), options.view().end(),
                                     [](char c) { return c == '-' || KxAscii::isAlpha(c) || KxAscii::isDigit(c); });
    if (lines.isPlain() && (isToken || !isRFC())) {
        const KxHandle<KxSipDigestCredentialsInfo> received =
            KxSipDigestCredentialsInfo::sCreateFrom(KxByteArray::sCreate(out.size(), out.view().data()));
        received->setMethod(method);
        received->setEntityBody(body.c_str());
        validate(*received, user, password, realm, out.view());
    }
    const std::string response = "response=" + std::string(KxHexEncoding::toHex(made->getRequestDigest()).view());
    KxByteArrayInputStream in{std::string_view(response)};
    made->parse(in);
    validate(*made, user, password, realm, response);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const Block block(data + 1, size - 1);
    const std::string_view text = block.view();
    switch (data[0] % 3) {
    case 0:
        checkReading<KxSipDigestChallengeInfo>(text);
        break;
    case 1:
        checkReading<KxSipDigestCredentialsInfo>(text);
        break;
    default:
        checkDigest(text);
    }
    return 0;
}
