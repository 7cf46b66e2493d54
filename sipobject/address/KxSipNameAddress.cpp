#include "sipobject/address/KxSipNameAddress.h"

#include "core/AceCleanupLogger.h"
#include "core/DynCastAssert.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxBytes.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipNameAddress"};

constexpr std::ptrdiff_t kNameLimit = 1024;
constinit const KxConstString kNoName("");
constexpr KxCharSet kLegalInName("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 -.!%*_+`'~");

/** The quote that closes the string opened before `at`, or `end`: the next quote that does not follow a backslash. */
[[gnu::always_inline]] inline const char* closingQuote(const char* at, const char* end, const char* readable) {
    const auto next = [=](const char* from) { return KxBytes::findAny<'"'>(from, end, readable); };
    for (at = next(at); at != end && at[-1] == '\\'; at = next(at + 1)) {
    }
    return at;
}

constexpr KxSipFault kTooLong{"Invalid SIP Name Address"};

// ---- the RFC grammar ----

constexpr KxSipFault kInvalid{"Invalid SIP Name Address"};
constexpr KxCharSet kToken("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-.!%*_+`'~");
constexpr KxCharSet kTokens = kToken | KxCharSet(" \t");
/** Control characters other than the tab, which may be in a quoted string only after a backslash. */
constexpr KxCharSet kControls(std::string_view("\0\1\2\3\4\5\6\7\b\n\v\f\r\16\17\20\21\22\23\24\25\26\27\30"
                                               "\31\32\33\34\35\36\37\177",
                                               32));
constexpr KxCharSet kInQuotes = kControls | KxCharSet("\"\\");
constexpr KxCharSet kURIEnd = kControls | KxCharSet(" \t\"<>");
constexpr KxCharSet kBareURIEnd = kURIEnd | KxCharSet(",;?");

constexpr KxCharSet kAfterBareURI(" \t\r\n,;");

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/** The end of the quoted string that begins at `at`; null if there is none. [RFC 3261 25.1] */
const char* quotedEnd(const char* at, const char* end, const char* readable) {
    for (at = kInQuotes.find(at + 1, end, readable); at != end && *at == '\\'; at = kInQuotes.find(at, end, readable)) {
        if (end - at < 2 || at[1] == '\r' || at[1] == '\n') {
            return nullptr;
        }
        at += 2;
    }
    return at != end && *at == '"' ? at + 1 : nullptr;
}

/** Whether the text is written as it is, and reads as a display name. */
bool isDisplayName(std::string_view text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    if (text.empty() || *begin == '"') {
        return text.empty() || quotedEnd(begin, end, end) == end;
    }
    return kToken.contains(text.front()) && kToken.contains(text.back()) &&
           std::all_of(begin, end, [](char c) { return kTokens.contains(c); });
}

/** The display name as a quoted string. */
KxString quoted(const KxString& name) {
    std::string text(1, '"');
    for (const char c : KxSipText(name).checked().view()) {
        if (kInQuotes.contains(c)) {
            text += '\\';
        }
        text += c;
    }
    return KxString(text.append(1, '"'));
}

/** Takes what comes before the URI: a display name before a "<", or nothing. */
KxSipFault takeDisplayName(KxSipLine& line, std::string_view& name) {
    const std::string_view text = line.window();
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    if (begin != end && *begin == '<') {
        return {};
    }
    const char* nameEnd = begin;
    const char* at = begin;
    if (at != end && *at == '"') {
        nameEnd = quotedEnd(begin, end, line.readableEnd());
        if (nameEnd == nullptr) {
            return KxSipFault("Invalid quote in KxSipNameAddress");
        }
        at = std::find_if_not(nameEnd, end, isBlank);
    } else {
        at = nameEnd = std::find_if_not(begin, end, [](char c) { return kTokens.contains(c); });
    }
    if (at == end || *at == '\r' || *at == '\n') {
        return KxSipFault("URL not specified");
    }
    if (*at == ':' && at != begin && *begin != '"' && std::none_of(begin, at, isBlank)) { // a scheme
        return {};
    }
    if (*at != '<') {
        return KxSipFault::sAbout(*at, "Invalid Character (?) in name-addr");
    }
    name = KxAscii::trimEnd(std::string_view(begin, static_cast<std::size_t>(nameEnd - begin)));
    line.consume(static_cast<std::size_t>(at - begin));
    return {};
}

/** Takes a URI, and its brackets if it has any. */
KxSipFault takeURI(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri) {
    const std::string_view text = line.window();
    if (KxBytes::startsWith(text, "<sip")) { // the class of the URI sees to its end
        return KxURI::sConstructFrom(line, standalone, uri);
    }
    const bool brackets = text.front() == '<';
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* const stop = brackets || standalone ? kURIEnd.find(begin + 1, end) : kBareURIEnd.find(begin + 1, end);
    if (brackets ? stop == end || *stop != '>' : stop != end && !kAfterBareURI.contains(*stop)) {
        return kInvalid;
    }
    KxSipLine own(std::string_view(begin, static_cast<std::size_t>(stop - begin) + (brackets ? 1 : 0)));
    line.consume(own.window().size());
    const KxSipFault fault = KxURI::sConstructFrom(own, standalone, uri);
    return fault || own.peek() < 0 || own.peek() == '>' ? fault : kInvalid;
}

KxHandle<KxURI> copyOf(const KxURI& uri) {
    return KxHandle<KxURI>::sOfNew(uri.isSipURL() ? new KxSipURL(static_cast<const KxSipURL&>(uri))
                                                  : OSKAN_DYNCAST_ASSERT(KxURI, uri.clone()));
}

KxString displayNameOf(const KxString& name) {
    return KxSipGrammar::sReadsNameAddressesStrictly() && !isDisplayName(name) ? quoted(name) : name;
}

} // namespace

constinit Oskan::MemAccount KxSipNameAddress::s_account{"KxSipNameAddress"};

KxSipNameAddress::KxSipNameAddress() : m_URI(new KxURI(nullptr)) {}

KxSipNameAddress::KxSipNameAddress(const KxString& displayName, const KxHandle<KxURI>& uri)
    : m_brackets(!displayName.empty()),
      m_standalone(true),
      m_displayName(displayNameOf(displayName)),
      m_URI(uri.isNil() ? nullptr : uri->clone()) {}

KxSipNameAddress::KxSipNameAddress(const char* text) : m_standalone(true) {
    parse(text);
}

KxSipNameAddress::KxSipNameAddress(const KxSipNameAddress& rNameAddress)
    : KxObject(rNameAddress),
      m_brackets(rNameAddress.m_brackets),
      m_standalone(rNameAddress.m_standalone),
      m_displayName(rNameAddress.m_displayName) {
    const Oskan::LeafTraceScope trace(s_logger, "KxSipNameAddress copy ctor");
    if (!rNameAddress.m_URI.isNil()) {
        KxHandle<KxURI> copy = copyOf(*rNameAddress.m_URI);
        m_URI.swap(copy); // it is nil
    }
}

KxSipNameAddress::~KxSipNameAddress() = default;

KxSipNameAddress* KxSipNameAddress::clone() const {
    return new KxSipNameAddress(*this);
}

KxHandle<KxSipNameAddress> KxSipNameAddress::sConstructFrom(KxInputStream& in) {
    const Oskan::EntryDepth entry;
    KxSipLine line(in);
    KxHandle<KxSipNameAddress> address;
    sConstructFrom(line, address).raiseIfAny();
    return address;
}

KxSipFault KxSipNameAddress::sConstructFrom(KxSipLine& line, KxHandle<KxSipNameAddress>& address) {
    KxHandle<KxSipNameAddress> made(new KxSipNameAddress(Held::Tag), KxUncounted{});
    const bool isStrict = KxSipGrammar::sReadsNameAddressesStrictly();
    const KxSipFault fault = s_logger.isEnabled(Oskan::LogLevel::Trace) ? made.get()->parse(line)
                             : isStrict                                 ? made.get()->parseStrictly(line)
                                                                        : made.get()->parseClassically(line);
    if (!fault) {
        address = std::move(made);
    }
    return fault;
}

KxHandle<KxSipURL> KxSipNameAddress::getURL() const {
    if (!m_URI.isNil() && m_URI->isSipURL()) {
        return KxHandle<KxSipURL>(static_cast<KxSipURL*>(m_URI.get()));
    }
    const Oskan::EntryDepth entry;
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, std::string("KxSipNameAddress::getURL returns NULL since ")
                                                 .append(getURLString().view())
                                                 .append(" isn't a SIP URL"));
    }
    return {};
}

KxString KxSipNameAddress::getURLString() const {
    return m_URI.isNil() ? KxString("") : m_URI->getString();
}

bool KxSipNameAddress::isLegalDisplayNameChar(char c) {
    return kLegalInName.contains(c);
}

void KxSipNameAddress::parse(const char* text) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipNameAddress::parse(2)");
    const std::string_view view(text == nullptr ? "" : text);
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, std::string("Parsing ").append(view).append(" into an KxSipNameAddress"));
    }
    KxByteArrayInputStream in(view);
    parse(in);
}

void KxSipNameAddress::parse(KxSipText text) {
    const Oskan::EntryDepth entry;
    KxSipLine line(text.checked().view());
    parse(line).raiseIfAny();
}

void KxSipNameAddress::parse(KxInputStream& in) {
    const Oskan::EntryDepth entry;
    KxSipLine line(in);
    parse(line).raiseIfAny();
}

KxSipFault KxSipNameAddress::parse(KxSipLine& line) {
    const Oskan::TraceScope trace(s_logger, "KxSipNameAddress::parse(1)");
    if (KxSipGrammar::sReadsNameAddressesStrictly()) [[unlikely]] {
        return parseStrictly(line);
    }
    return parseClassically(line);
}

[[gnu::always_inline]] inline KxSipFault KxSipNameAddress::parseClassically(KxSipLine& line) {
    KxStreamTokenizer::sDiscardWhite(line);
    const std::string_view text = line.window();
    const char* const end = text.data() + text.size();
    const char* uri = takeUsualName(text.data(), end, line.readableEnd());
    if (uri == nullptr) {
        uri = text.data();
        if (const KxSipFault fault = parseDisplayName(text.data(), end, uri)) {
            return fault;
        }
    }
    line.consume(static_cast<std::size_t>(uri - text.data()));
    return KxURI::sConstructFrom(line, m_standalone, m_URI);
}

/** Reads the display name of most name-addresses: none, or a quoted one with a blank after it, and then a "<". Returns
    the place of the "<"; or null, without a change, if there is something else. */
[[gnu::always_inline]] inline const char* KxSipNameAddress::takeUsualName(const char* begin, const char* end,
                                                                          const char* readable) {
    const char* at = begin;
    if (at != end && *at == '"') {
        at = closingQuote(at + 1, end, readable);
        at += end - at > 2 && at[1] == ' ' ? 2 : 0;
    }
    if (at == end || *at != '<' || at - begin >= kNameLimit) {
        return nullptr;
    }
    const std::string_view name(begin, static_cast<std::size_t>(at == begin ? 0 : at - 1 - begin));
    m_displayName = name.empty() ? KxString(kNoName) : KxString(name);
    m_brackets = true;
    return at;
}

/** Reads the display name, up to the "<", colon or line end that shows where the URI is. Sets `uri` to the place of the
    URI: the "<", or the last quote if there is one. */
[[gnu::noinline]] KxSipFault KxSipNameAddress::parseDisplayName(const char* begin, const char* end, const char*& uri) {
    for (const char* at = begin; at != end && *at != ':'; ++at) {
        if (*at == '<') {
            setDisplayName(begin, at);
            m_brackets = true;
            uri = at;
            return {};
        }
        if (*at == '\n') {
            if (!m_brackets) {
                setDisplayName(begin, at);
                return KxSipFault("URL not specified");
            }
            break;
        }
        if (*at == '"') {
            at = closingQuote(at + 1, end, end);
            if (at - begin >= kNameLimit) {
                return kTooLong;
            }
            if (at == end) {
                return KxSipFault("Invalid quote in KxSipNameAddress");
            }
            uri = at;
        } else if (!isLegalDisplayNameChar(*at)) {
            return KxSipFault::sAbout(*at, "Invalid Character (?) in name-addr");
        }
        if (at + 1 - begin >= kNameLimit) {
            return kTooLong;
        }
    }
    if (m_brackets) { // of the value that was read into this object before
        uri = std::find(uri, end, '<');
    }
    return {};
}

/** In the RFC grammar: name-addr / addr-spec. [RFC 3261 25.1] */
KxSipFault KxSipNameAddress::parseStrictly(KxSipLine& line) {
    line.skipSpace();
    std::string_view name;
    KxHandle<KxURI> uri;
    KxSipFault fault = takeDisplayName(line, name);
    const bool brackets = !fault && line.peek() == '<';
    if (!fault) {
        fault = takeURI(line, m_standalone, uri);
    }
    if (!fault) {
        m_displayName = name.empty() ? KxString(kNoName) : KxString(name);
        m_URI = std::move(uri);
        m_brackets = brackets;
    }
    return fault;
}

void KxSipNameAddress::setDisplayName(const char* begin, const char* end) {
    m_displayName = KxString(KxAscii::trim(std::string_view(begin, static_cast<std::size_t>(end - begin))));
}

void KxSipNameAddress::display(KxOutputStream& out, bool) const {
    if (m_displayName.empty()) {
        out.write('<');
    } else {
        out.writeAll(m_displayName, std::string_view(" <", 2));
    }
    if (!m_URI.isNil() && m_URI->isSipURL()) {
        static_cast<const KxSipURL*>(m_URI.get())->display(out, false);
    } else {
        out << m_URI;
    }
    out.write('>');
}

KxInputStream& operator>>(KxInputStream& in, KxHandle<KxSipNameAddress>& address) {
    if (address.isNil()) {
        address = KxSipNameAddress::sConstructFrom(in);
    } else {
        address->parse(in);
    }
    return in;
}

KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxSipNameAddress>& address) {
    if (!address.isNil()) {
        address->display(out, false);
    }
    return out;
}
