#include "sipobject/address/KxURI.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxNameRegistry.h"
#include "sipobject/KxSipLineText.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxTelURL.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"
#include "util/KxWholeWindow.h"

#include <algorithm>
#include <string>
#include <typeinfo>
#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxURI"};
constinit KxNameRegistry<KxURI::Creator> s_registry;
constexpr KxCharSet kColon(":");
constexpr KxCharSet kDataEnd(">\r\n");
constexpr KxCharSet kSchemeCharacters("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.");

[[gnu::always_inline]] inline const char* skip(const char* at, const char* end, char blank, char other) {
    while (at != end && (*at == blank || *at == other)) {
        ++at;
    }
    return at;
}

/** The position of the next character of a URI, after blanks and an opening bracket. */
[[gnu::always_inline]] inline const char* nextOf(const char* at, const char* end) {
    at = skip(at, end, ' ', ' ');
    return at != end && *at == '<' ? skip(at + 1, end, ' ', '\t') : at;
}

/** The first three letters of a URI, without blanks and opening brackets; NUL if it is shorter. */
struct Prefix {
    Prefix(const char* at, const char* end) {
        if (end - at >= 4 && KxAscii::isAlpha(at[0]) && KxAscii::isAlpha(at[1]) && KxAscii::isAlpha(at[2])) {
            std::copy_n(at, 3, letters);
            return;
        }
        for (char& letter : letters) {
            at = nextOf(at, end);
            if (at == end) {
                break;
            }
            letter = *at++;
        }
    }
    /** Compares with `scheme`, which is in lower case, ignoring letter case. */
    bool is(const char (&scheme)[4]) const {
        return KxAscii::toLower(letters[0]) == scheme[0] && KxAscii::toLower(letters[1]) == scheme[1] &&
               KxAscii::toLower(letters[2]) == scheme[2];
    }
    char letters[3] = {};
};

/** The text before the colon, without leading blanks and an opening bracket; empty unless it is a valid scheme.
    scheme = ALPHA *( ALPHA / DIGIT / "+" / "-" / "." )                       [RFC 3261 25.1] */
std::string_view schemeOf(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* const begin = nextOf(text.data(), end);
    const char* const stop = std::find_if_not(begin, end, [](char c) { return kSchemeCharacters.contains(c); });
    const bool isScheme = stop != end && *stop == ':';
    return {begin, isScheme ? static_cast<std::size_t>(stop - begin) : 0};
}

void debug(const char* what, const KxString& value) {
    s_logger.log(Oskan::LogLevel::Debug, std::string(what).append(value.view()));
}

} // namespace

constinit Oskan::MemAccount KxURI::s_account{"KxURI"};

KxURI::KxURI(const char* scheme) : m_Scheme(scheme) {}

KxURI::KxURI(const KxURI& other)
    : KxObject(other), m_standalone(other.m_standalone), m_SchemeData(other.m_SchemeData), m_Scheme(other.m_Scheme) {}

KxURI::~KxURI() = default;

KxURI* KxURI::clone() const {
    return new KxURI(*this);
}

bool KxURI::hasParameters() const {
    return false;
}

bool KxURI::hasHeaders() const {
    return false;
}

KxString KxURI::getString() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxURI::getString()");
    KxString text(KxStringBuffer::sCreate(m_Scheme.c_str(), m_Scheme.length(), 80));
    text.append(":").append(m_SchemeData.view());
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        debug("m_Scheme = ", m_Scheme);
        debug("m_SchemeData = ", m_SchemeData);
        debug("final aString = ", text);
    }
    return text;
}

void KxURI::display(KxOutputStream& out, bool) const {
    out << getString();
}

void KxURI::parse(KxInputStream& in) {
    read(in).raiseIfAny();
}

KxSipFault KxURI::read(KxInputStream& in) {
    KxScannedText scanned;
    if (in.peek() == '<') {
        in.read();
    }
    m_Scheme = KxSipLineText::sOf(KxAscii::trim(scanned.token(in, kColon)));
    if (in.read() < 0) {
        return KxSipFault("INVALID URI", KxSipFault::Error::Other);
    }
    m_SchemeData = KxString(KxAscii::trim(scanned.until(in, kDataEnd)));
    if (in.peek() == '>') {
        in.read();
    }
    return {};
}

void KxURI::parse(const char* text) {
    KxByteArrayInputStream in(std::string_view(text == nullptr ? "" : text));
    parse(in);
}

bool KxURI::operator==(const KxURI& other) const {
    return m_Scheme == other.m_Scheme && m_SchemeData == other.m_SchemeData;
}

void KxURI::sAddConstructor(const char* scheme, Creator creator) {
    s_registry.add(scheme, creator);
}

KxHandle<KxURI> KxURI::sConstruct(std::string_view scheme) {
    const Creator creator = s_registry.find(scheme);
    return KxHandle<KxURI>::sOfNew(creator != nullptr ? creator() : new KxURI(KxString(scheme), false));
}

KxHandle<KxURI> KxURI::sConstructFrom(KxInputStream& in, bool standalone) {
    const Oskan::EntryDepth entry;
    KxHandle<KxURI> uri;
    sRead(in, standalone, uri).raiseIfAny();
    return uri;
}

KxSipFault KxURI::sRead(KxInputStream& in, bool standalone, KxHandle<KxURI>& uri) {
    if (in.isWhole() && !s_logger.isEnabled(Oskan::LogLevel::Debug)) [[likely]] {
        const char* what = nullptr;
        return sReadWhole(in, standalone, uri, what);
    }
    return sReadLogged(in, standalone, uri);
}

KxSipFault KxURI::sReadLogged(KxInputStream& in, bool standalone, KxHandle<KxURI>& uri) {
    const Oskan::TraceScope trace(s_logger, "KxURI::sConstructFrom");
    const char* what = nullptr;
    const KxSipFault fault =
        KxWithWholeWindow(in, [&](KxInputStream& line) { return sReadWhole(line, standalone, uri, what); });
    if (!fault && s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        debug(what, uri->isSipURL() ? uri->getString() : KxString());
    }
    return fault;
}

template <class T>
inline KxSipFault KxURI::sReadAs(KxInputStream& in, KxHandle<T> read, KxHandle<KxURI>& uri) {
    const KxSipFault fault = read.get()->T::read(in);
    if (!fault) {
        uri = std::move(read);
    }
    return fault;
}

/** Reads a URI whose scheme does not begin with "sip" or "tel". */
KxSipFault KxURI::sReadOther(KxInputStream& in, std::string_view scheme, bool standalone, KxHandle<KxURI>& uri) {
    KxHandle<KxURI> read = sConstruct(scheme);
    const KxURI& made = *read;
    if (typeid(made) == typeid(KxURI)) {
        return sReadAs(in, std::move(read), uri);
    }
    read->m_standalone = standalone;
    read->parse(in); // an application's own class, which may throw
    uri = std::move(read);
    return {};
}

/** Reads a URI from a whole stream, and sets `what` to a description for the log. */
inline KxSipFault KxURI::sReadWhole(KxInputStream& in, bool standalone, KxHandle<KxURI>& uri, const char*& what) {
    const std::string_view text = in.window();
    const Prefix prefix(text.data(), text.data() + text.size());
    if (prefix.is("sip")) {
        what = "KxURI: parsed sip URL: ";
        KxHandle<KxSipURL> url = KxMake<KxSipURL>();
        url.get()->m_standalone = standalone;
        return sReadAs(in, std::move(url), uri);
    }
    if (prefix.is("tel")) {
        what = "KxURI: parsed tel URL";
        KxHandle<KxTelURL> url = KxMake<KxTelURL>();
        url.get()->m_standalone = standalone;
        return sReadAs(in, std::move(url), uri);
    }
    what = "KxURI: parsed URL of unknown scheme";
    const std::string_view scheme = prefix.letters[0] == '\0' ? std::string_view() : schemeOf(text);
    return scheme.empty() ? sReadAs(in, KxMake<KxURI>(nullptr), uri) : sReadOther(in, scheme, standalone, uri);
}

KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxURI>& uri) {
    if (!uri.isNil()) {
        uri->serialize(out);
    }
    return out;
}
