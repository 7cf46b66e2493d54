#include "sipobject/address/KxSipURL.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipEscapes.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipHost.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/address/KxSipURLParser.h"
#include "sipobject/address/KxSipUsualURL.h"
#include "sipobject/address/KxURIEquivalence.h"
#include "util/KxByteArrayOutputStream.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_unknownTransportLogger{"KxSipURL.UnknownTransportInContact"};
constinit Oskan::AceCleanupLogger s_logger{"KxSipURL"};
constexpr KxCharSet kEscapedInHeader("&+/:;=?@");
constexpr KxCharSet kNotInUser("\"&:@");
constexpr KxCharSet kNotInHost("\"&:@,;?"); // and not in a password
constexpr KxCharSet kNotInStrictUser("\":@");
constexpr KxCharSet kInHeader("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.!~*'()[]/?:+$");
constexpr std::uint32_t kLastPort = 65535;

KxURI* makeSipURL() {
    return new KxSipURL;
}

const struct Registration {
    Registration() { KxURI::sAddConstructor(KxSipURL::sToken.c_str(), &makeSipURL); }
} s_registration;

/** Whether no part of a URL can contain the character: some of the texts that contain a URL end there. */
bool endsURL(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' || byte == 0x7f || c == '<' || c == '>';
}

bool isPart(std::string_view text, const KxCharSet& excluded) {
    return std::none_of(text.begin(), text.end(), [&](char c) { return endsURL(c) || excluded.contains(c); });
}

/** Between quotes, a user may contain any delimiter. */
bool isUser(std::string_view text) {
    if (KxSipGrammar::sReadsURLsStrictly()) {
        return isPart(text, kNotInStrictUser);
    }
    bool quoted = false;
    for (const char c : text) {
        quoted ^= c == '"';
        if (endsURL(c) || (!quoted && c != '"' && kNotInUser.contains(c))) {
            return false;
        }
    }
    return !quoted;
}

/** The transport of a sips URL that names this one. */
KxSocketImpl::Transport overTLS(KxSocketImpl::Transport transport) {
    switch (transport) {
    case KxSocketImpl::TCP:
        return KxSocketImpl::TLS;
    case KxSocketImpl::WS:
        return KxSocketImpl::WSS;
    default:
        return transport;
    }
}

void require(bool isValid, const char* otherwise) {
    if (!isValid) {
        KxSipParseError::sThrow(otherwise);
    }
}

void writeEscaped(KxOutputStream& out, std::string_view value) {
    static constexpr char kDigits[] = "0123456789abcdef";
    for (const char c : value) {
        if (kEscapedInHeader.contains(c)) {
            const auto byte = static_cast<unsigned char>(c);
            const char escaped[] = {'%', kDigits[byte >> 4], kDigits[byte & 15]};
            out.write(std::string_view(escaped, sizeof escaped));
        } else {
            out.write(c);
        }
    }
}

} // namespace

constinit const KxConstString KxSipURL::sToken{"sip"};
constinit const KxConstString KxSipURL::sSecureToken{"sips"};
constinit const KxConstString KxSipURL::DEFAULT_PORT_STRING{"5060"};

KxSipURL::KxSipURL(const KxSipURL& other)
    : KxURI(other),
      m_user(other.m_user),
      m_password(other.m_password),
      m_host(other.m_host),
      m_port(other.m_port),
      m_hasPort(other.m_hasPort),
      m_form(other.m_form),
      m_parameters(other.m_parameters),
      m_headers(other.m_headers) {}

KxSipURL* KxSipURL::clone() const {
    return new KxSipURL(*this);
}

std::size_t KxSipURL::numParameters() const {
    return m_parameters.size();
}

std::size_t KxSipURL::numHeaders() const {
    return m_headers.size();
}

std::uint32_t KxSipURL::getPort() const {
    if (m_hasPort) {
        return m_port;
    }
    return isSecure() || getTransportParam() == KxSocketImpl::TLS ? 5061 : 5060;
}

std::int64_t KxSipURL::getTTL() const {
    const KxString* const ttl = m_parameters.findValue("ttl");
    return ttl == nullptr ? 1 : KxAscii::toNumber(*ttl);
}

KxUserParam KxSipURL::getUserParam() const {
    return getParameter("user") == "phone" ? KX_USER_PHONE : KX_USER_NONE;
}

KxSocketImpl::Transport KxSipURL::getTransportParam() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipURL::getTransportParam");
    const KxSocketImpl::Transport unsaid = isSecure() ? KxSocketImpl::TLS : KxSocketImpl::UDP;
    const KxString* const name = m_parameters.findValue("transport");
    if (name == nullptr) {
        return unsaid;
    }
    const auto transport = KxSocketImpl::parseTransport(*name);
    if (transport.isValid()) {
        return isSecure() ? overTLS(transport.get()) : transport.get();
    }
    if (s_unknownTransportLogger.isEnabled(Oskan::LogLevel::Warn)) {
        s_unknownTransportLogger.log(Oskan::LogLevel::Warn, std::string("Contact header contains unknown transport : ")
                                                                .append(name->view())
                                                                .append(". Using default ")
                                                                .append(KxSocketImpl::getTransportString(unsaid))
                                                                .append(" transport"));
    }
    return unsaid;
}

KxString KxSipURL::getHeader(std::string_view name) const {
    if (!KxSipGrammar::sReadsURLsStrictly()) {
        return m_headers.getValue(name);
    }
    const auto found = std::find_if(m_headers.begin(), m_headers.end(), [name](const KxParameters::Pair& header) {
        return KxAscii::equalsNoCase(KxSipEscapes::sDecoded(header.name), name);
    });
    return found == m_headers.end() ? KxString() : KxString(std::string_view(KxSipEscapes::sDecoded(found->value)));
}

/** A header without escapes. */
KxParameters::Pair KxSipURL::sDecoded(const KxParameters::Pair& header) {
    if (!KxSipGrammar::sReadsURLsStrictly()) {
        return header;
    }
    return {KxString(std::string_view(KxSipEscapes::sDecoded(header.name))),
            KxString(std::string_view(KxSipEscapes::sDecoded(header.value)))};
}

void KxSipURL::setTransportParam(KxSocketImpl::Transport transport) {
    setParameter("transport", KxSocketImpl::getTransportString(transport, true));
}

void KxSipURL::parse(KxInputStream& in) {
    const Oskan::EntryDepth entry;
    KxSipLine line(in);
    parse(line).raiseIfAny();
}

KxSipFault KxSipURL::parse(KxSipLine& line) {
    if (KxSipGrammar::sReadsURLsStrictly()) [[unlikely]] {
        return parseBy<true>(line);
    }
    return parseBy<false>(line);
}

/** When something is logged, no URL is usual. */
template <bool kStrict>
[[gnu::noinline]] KxSipFault KxSipURL::parseBy(KxSipLine& line) {
    KxSipFault fault;
    if (!s_logger.isEnabled(Oskan::LogLevel::Debug) && KxSipUsualURL<kStrict>::sTake(*this, line, fault)) {
        return fault;
    }
    return parseUnusual<kStrict>(line);
}

template <bool kStrict>
[[gnu::noinline]] KxSipFault KxSipURL::parseUnusual(KxSipLine& line) {
    const Oskan::TraceScope trace(s_logger, "KxSipURL::parse(rInputStream)");
    return KxSipURLParser<kStrict>(*this, line).parse();
}

template KxSipFault KxSipURL::parseUnusual<false>(KxSipLine& line);

/** Reads a URL of the usual form; returns false, without a change, for another one. */
template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipURL::parseUsual(std::string_view text) {
    KxSipUsualURL<kStrict> usual(text, text.data() + text.size(), m_standalone);
    const bool isUsual = usual.find();
    if (isUsual) {
        usual.store(*this).raiseIfAny();
    }
    return isUsual;
}

void KxSipURL::parse(const char* text) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipURL::parse(pSipURLString)");
    const std::string_view view(text == nullptr ? "" : text);
    const bool mayBeUsual = !s_logger.isEnabled(Oskan::LogLevel::Debug) && m_user.empty();
    if (mayBeUsual && (KxSipGrammar::sReadsURLsStrictly() ? parseUsual<true>(view) : parseUsual<false>(view))) {
        return;
    }
    KxSipLine line(view);
    parse(line).raiseIfAny();
}

void KxSipURL::parse(KxSipText text) {
    const Oskan::EntryDepth entry;
    KxSipLine line(text.checked().view());
    parse(line).raiseIfAny();
}

void KxSipURL::parseHeader(KxInputStream& in) {
    const Oskan::EntryDepth entry;
    KxSipLine line(in);
    const KxSipFault fault = KxSipGrammar::sReadsURLsStrictly() ? KxSipURLParser<true>(*this, line).parseHeaders()
                                                                : KxSipURLParser<false>(*this, line).parseHeaders();
    fault.raiseIfAny();
}

void KxSipURL::setUser(KxSipText user) {
    require(isUser(user.view()), "Invalid user in SIP URL");
    KxString text = user.line();
    if (text.empty()) {
        m_password = KxString();
        setForm(kEmptyPassword, false);
    }
    m_user = std::move(text);
}

void KxSipURL::setUserPassword(KxSipText password) {
    const KxCharSet& excluded = KxSipGrammar::sReadsURLsStrictly() ? kNotInStrictUser : kNotInHost;
    require(isPart(password.view(), excluded) && (password.isNone() || !m_user.empty()), "Invalid password in SIP URL");
    m_password = password.line();
    setForm(kEmptyPassword, false);
}

void KxSipURL::setHost(KxSipText host) {
    constexpr const char* kInvalid = "Invalid host in SIP URL";
    if (KxSipGrammar::sChecksHosts()) {
        const KxSipHost given = KxSipHost::sGiven(host.view());
        require(given.isValid(), kInvalid);
        m_host = given.text() == host.view() ? host.line() : KxString(given.text());
        setForm(kIPv6Host, given.isIPv6());
        return;
    }
    require(isPart(host.view(), kNotInHost) && !host.isNone(), kInvalid);
    m_host = host.line();
}

void KxSipURL::setPort(std::uint32_t port) {
    require(port <= kLastPort, "Invalid port in SIP URL");
    m_port = port;
    m_hasPort = true;
}

void KxSipURL::removePort() {
    m_port = 5060;
    m_hasPort = false;
}

KxString KxSipURL::getString() const {
    KxByteArrayOutputStream out(80);
    display(out, false);
    return KxString(out.view());
}

void KxSipURL::display(KxOutputStream& out, bool) const {
    constexpr std::string_view kScheme("sip:", 4);
    if (m_form != 0 || !m_headers.empty() || !m_password.empty()) [[unlikely]] {
        return displaySeldom(out);
    }
    const KxOutputStream::SeparateNumber port{m_hasPort, ':', m_port};
    if (m_user.empty()) {
        out.writeAll(kScheme, m_host, port);
    } else {
        out.writeAll(kScheme, m_user, '@', m_host, port);
    }
    m_parameters.serializeWithSemicolon(out);
}

/** Writes a URL with headers, a password or a part of the RFC grammar. */
[[gnu::noinline]] void KxSipURL::displaySeldom(KxOutputStream& out) const {
    out << (isSecure() ? "sips:" : "sip:") << m_user;
    if (!m_user.empty()) {
        if (!m_password.empty() || (m_form & kEmptyPassword) != 0) {
            out << ':' << m_password;
        }
        out << '@';
    }
    if (isHostIPv6()) {
        out << '[' << m_host << ']';
    } else {
        out << m_host;
    }
    if (m_hasPort) {
        out << ':' << m_port;
    }
    m_parameters.serializeWithSemicolon(out);
    if (!m_headers.empty()) {
        displayHeaders(out);
    }
}

void KxSipURL::displayHeaders(KxOutputStream& out) const {
    const bool isStrict = KxSipGrammar::sReadsURLsStrictly();
    out.write('?');
    bool first = true;
    for (const KxParameters::Pair& header : m_headers) {
        if (header.name.empty()) {
            continue;
        }
        if (!first) {
            out.write(isStrict ? std::string_view("&", 1) : std::string_view("%3B", 3));
        }
        first = false;
        if (isStrict) {
            KxSipEscapes::sWrite(out, header.name, kInHeader);
            out.write('=');
            KxSipEscapes::sWrite(out, header.value, kInHeader);
        } else {
            out.write(header.name.view());
            out.write(std::string_view("%3D", 3));
            writeEscaped(out, header.value);
        }
    }
}

bool KxSipURL::isEquivalentTo(const KxSipURL& other) const {
    return isSecure() == other.isSecure() && m_hasPort == other.m_hasPort && (!m_hasPort || m_port == other.m_port) &&
           KxURIEquivalence::sOfUsers(m_user, other.m_user) &&
           KxURIEquivalence::sOfUsers(m_password, other.m_password) &&
           (m_form & kEmptyPassword) == (other.m_form & kEmptyPassword) && KxSipHost::sAreEqual(m_host, other.m_host) &&
           KxURIEquivalence::sOfParameters(m_parameters, other.m_parameters) &&
           KxURIEquivalence::sOfHeaders(m_headers, other.m_headers);
}

bool KxSipURL::operator==(const KxSipURL& other) const {
    if (KxSipGrammar::sComparesURLsByMeaning()) {
        return isEquivalentTo(other);
    }
    return m_user == other.m_user && m_host == other.m_host && m_port == other.getPort() &&
           getTransportParam() == other.getTransportParam() && m_password == other.m_password &&
           KxURIEquivalence::sMatchParameters(m_parameters, other.m_parameters) &&
           KxURIEquivalence::sMatchHeaders(m_headers, other.m_headers);
}

KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxSipURL>& url) {
    if (!url.isNil()) {
        url->serialize(out);
    }
    return out;
}
