#include "sipobject/address/KxURI.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxNameRegistry.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/KxSipLineText.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxSipUsualURL.h"
#include "sipobject/address/KxTelURL.h"
#include "util/KxOutputStream.h"

#include <algorithm>
#include <string>
#include <typeinfo>
#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxURI"};
constinit Oskan::AceCleanupLogger s_sipURLLogger{"KxSipURL"};
constinit KxNameRegistry<KxURI::Creator> s_registry;
constexpr KxSipFault kInvalid("INVALID URI", KxSipFault::Error::Other);
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
            after = at + 3;
            return;
        }
        for (char& letter : letters) {
            at = nextOf(at, end);
            if (at == end) {
                break;
            }
            letter = *at++;
        }
        after = at;
    }
    /** Compares with `scheme`, which is in lower case, ignoring letter case. */
    bool is(const char (&scheme)[4]) const {
        return KxAscii::toLower(letters[0]) == scheme[0] && KxAscii::toLower(letters[1]) == scheme[1] &&
               KxAscii::toLower(letters[2]) == scheme[2];
    }
    char letters[3] = {};
    const char* after; ///< The place after the last letter.
};

/** The text before the colon, without leading blanks and an opening bracket; empty unless it is a valid scheme.
    scheme = ALPHA *( ALPHA / DIGIT / "+" / "-" / "." )                       [RFC 3261 25.1] */
[[gnu::always_inline]] inline std::string_view schemeOf(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* const begin = nextOf(text.data(), end);
    const char* const stop = std::find_if_not(begin, end, [](char c) { return kSchemeCharacters.contains(c); });
    const bool isScheme = stop != end && *stop == ':';
    return {begin, isScheme ? static_cast<std::size_t>(stop - begin) : 0};
}

/** Whether the text, up to a ">" or a line end, is a scheme, a colon, and characters that a URI may have.
    absoluteURI = scheme ":" ( hier-part / opaque-part )                      [RFC 3261 25.1] */
bool isAbsolute(std::string_view text) {
    const char* const last = text.data() + text.size();
    const char* const end = kDataEnd.find(text.data(), last, last);
    const std::string_view scheme = schemeOf(text);
    return !scheme.empty() && scheme.data() + scheme.size() + 1 < end &&
           std::all_of(scheme.data(), end, [](char c) { return c > ' ' && c != 0x7f && c != '<' && c != '"'; });
}

/** Whether the RFC grammar refuses the text as a URI of any scheme. */
[[gnu::noinline]] bool isUnreadable(const KxSipLine& line) {
    return KxSipGrammar::sReadsURLsStrictly() && !isAbsolute(line.window());
}

[[gnu::cold, gnu::noinline]] bool isScheme(std::string_view text, const KxString& one, const KxString& other) {
    const std::string_view scheme = schemeOf(text);
    return one.equalsNoCase(scheme) || other.equalsNoCase(scheme);
}

/** Whether the scheme, of which the first letters are known, is one of the two. In the classic grammar these letters
    decide. */
[[gnu::always_inline]] inline bool isWhole(const Prefix& prefix, std::string_view text, const KxString& one,
                                           const KxString& other) {
    return !KxSipGrammar::sReadsURLsStrictly() || (prefix.after != text.data() + text.size() && *prefix.after == ':') ||
           isScheme(text, one, other);
}

void debug(const char* what, const KxString& value) {
    s_logger.log(Oskan::LogLevel::Debug, std::string(what).append(value.view()));
}

void logConstructed(const char* kind, const KxURI& uri) {
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) [[unlikely]] {
        debug(kind, uri.isSipURL() ? uri.getString() : KxString());
    }
}

} // namespace

constinit Oskan::MemAccount KxURI::s_account{"KxURI"};

KxURI::KxURI(const char* scheme) : m_Scheme(scheme) {}

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
    KxSipLine line(in);
    parse(line).raiseIfAny();
}

KxSipFault KxURI::parse(KxSipLine& line) {
    if (KxSipGrammar::sReadsURLsStrictly()) {
        line.skipSpace(); // as isAbsolute does
    }
    if (line.peek() == '<') {
        line.read();
    }
    m_Scheme = KxSipLineText::sOf(KxAscii::trim(line.token(kColon)));
    if (line.read() < 0) {
        return kInvalid;
    }
    m_SchemeData = KxString(KxAscii::trim(line.until(kDataEnd)));
    if (line.peek() == '>') {
        line.read();
    }
    return {};
}

void KxURI::parse(const char* text) {
    KxSipLine line(std::string_view(text == nullptr ? "" : text));
    parse(static_cast<KxInputStream&>(line));
}

void KxURI::parse(KxSipText text) {
    KxSipLine line(text.checked().view());
    parse(static_cast<KxInputStream&>(line));
}

bool KxURI::operator==(const KxURI& other) const {
    if (KxSipGrammar::sComparesURLsByMeaning()) {
        return isEquivalentTo(other);
    }
    return m_Scheme == other.m_Scheme && m_SchemeData == other.m_SchemeData;
}

/** URIs of one class compare as that class does. The scheme of others is compared without regard to letter case. */
bool KxURI::isEquivalentTo(const KxURI& other) const {
    if (typeid(*this) != typeid(other)) {
        return false;
    }
    if (typeid(*this) == typeid(KxSipURL)) {
        return static_cast<const KxSipURL&>(*this) == static_cast<const KxSipURL&>(other);
    }
    if (typeid(*this) == typeid(KxTelURL)) {
        return static_cast<const KxTelURL&>(*this) == static_cast<const KxTelURL&>(other);
    }
    return m_Scheme.equalsNoCase(other.m_Scheme) && m_SchemeData == other.m_SchemeData;
}

void KxURI::sAddConstructor(const char* scheme, Creator creator) {
    s_registry.add(scheme, creator);
}

KxHandle<KxURI> KxURI::sConstruct(std::string_view scheme) {
    const Creator creator = s_registry.find(scheme).creator;
    if (creator != nullptr) {
        return KxHandle<KxURI>::sOfNew(creator());
    }
    const KxString held(scheme);
    return KxHandle<KxURI>::sOfNew(new KxURI(held, false));
}

KxHandle<KxURI> KxURI::sConstructFrom(KxInputStream& in, bool standalone) {
    const Oskan::EntryDepth entry;
    KxSipLine line(in);
    KxHandle<KxURI> uri;
    sConstructFrom(line, standalone, uri).raiseIfAny();
    return uri;
}

/** Reads a SIP URL of the usual form, or what else there is. */
template <bool kStrict>
[[gnu::always_inline]] inline KxSipFault KxURI::sConstructUsual(KxSipLine& line, bool standalone,
                                                                KxHandle<KxURI>& uri) {
    KxSipUsualURL<kStrict> usual(line.window(), line.readableEnd(), standalone);
    if (!usual.find()) [[unlikely]] {
        return sConstructByScheme(line, standalone, uri);
    }
    KxHandle<KxSipURL> made(new KxSipURL(Held::Tag), KxUncounted{});
    KxSipURL& url = *made.get();
    url.m_standalone = standalone;
    const KxSipFault fault = usual.store(url);
    line.consume(static_cast<std::size_t>(usual.end() - line.window().data()));
    if (!fault) {
        uri = std::move(made);
    }
    return fault;
}

[[gnu::noinline]] KxSipFault KxURI::sConstructStrictly(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri) {
    return sConstructUsual<true>(line, standalone, uri);
}

KxSipFault KxURI::sConstructFrom(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri) {
    if (s_logger.isEnabled(Oskan::LogLevel::Debug) || s_sipURLLogger.isEnabled(Oskan::LogLevel::Debug)) [[unlikely]] {
        return sConstructByScheme(line, standalone, uri);
    }
    return KxSipGrammar::sReadsURLsStrictly() ? sConstructStrictly(line, standalone, uri)
                                              : sConstructUsual<false>(line, standalone, uri);
}

[[gnu::noinline]] KxSipFault KxURI::sConstructByScheme(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri) {
    const Oskan::TraceScope trace(s_logger, "KxURI::sConstructFrom");
    const auto construct = [&]<class T>(KxHandle<T> made, const char* kind) {
        made.get()->m_standalone = standalone;
        const KxSipFault fault = made.get()->T::parse(line);
        if (!fault) {
            uri = std::move(made);
            logConstructed(kind, *uri);
        }
        return fault;
    };
    const std::string_view text = line.window();
    const Prefix prefix(text.data(), text.data() + text.size());
    if (prefix.is("sip") && isWhole(prefix, text, KxSipURL::sToken, KxSipURL::sSecureToken)) {
        return construct(KxMake<KxSipURL>(), "KxURI: parsed sip URL: ");
    }
    if (prefix.is("tel") && isWhole(prefix, text, KxTelURL::sToken, KxTelURL::sToken)) {
        return construct(KxMake<KxTelURL>(), "KxURI: parsed tel URL");
    }
    constexpr const char* kOther = "KxURI: parsed URL of unknown scheme";
    const std::string_view scheme = prefix.letters[0] == '\0' ? std::string_view() : schemeOf(text);
    KxHandle<KxURI> made = scheme.empty() ? KxMake<KxURI>(nullptr) : sConstruct(scheme);
    KxURI& object = *made;
    if (typeid(object) == typeid(KxURI)) {
        return isUnreadable(line) ? kInvalid : construct(std::move(made), kOther);
    }
    object.m_standalone = standalone;
    object.parse(static_cast<KxInputStream&>(line)); // an application's own class, which may throw
    uri = std::move(made);
    logConstructed(kOther, *uri);
    return {};
}

KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxURI>& uri) {
    if (!uri.isNil()) {
        uri->serialize(out);
    }
    return out;
}
