#include "sipobject/headers/KxSipViaHeader.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipHost.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"
#include "util/UUID.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace {

constinit const KxConstString kSip{"SIP"};
constinit const KxConstString kVersion{"2.0"};
constinit const KxConstString kUdp{"UDP"};
constinit const KxConstString kNothing{""};

constexpr KxCharSet kSlash("/");
constexpr char kUsualProtocol[] = "SIP/2.0/";
constexpr std::size_t kUuidLength = 36;
constexpr std::uint32_t kLastPort = 65535;
constexpr const char* kInvalid = "Invalid Via header";

} // namespace

constinit const KxConstString KxSipViaHeader::sToken{"Via"};
constinit const KxConstString KxSipViaHeader::sCompactToken{"v"};

static const KxSipViaHeader::Registration s_registration;

KxSipViaHeader::KxSipViaHeader()
    : m_protocolName(kSip), m_protocolVersion(kVersion), m_transport(kUdp), m_host(kNothing), m_comment(kNothing) {
    const Oskan::TraceScope trace(sLogger(), "KxSipViaHeader default ctor");
}

KxSipViaHeader::KxSipViaHeader(const char* host, unsigned port, const char* transport)
    : m_protocolName(kSip),
      m_protocolVersion(kVersion),
      m_transport(KxString(transport).upper()),
      m_host(host),
      m_port(port),
      m_hasPort(true) {
    const Oskan::EntryTraceScope trace(sLogger(), "KxSipViaHeader ctor");
    if (KxSipGrammar::sChecksHosts()) {
        setHost(KxSipHost::sGiven(m_host));
    }
    checkValidity().raiseIfAny();
}

KxSipViaHeader::KxSipViaHeader(const KxSipViaHeader& other)
    : KxSipHeaderOf(other),
      m_parameters(other.m_parameters),
      m_protocolName(other.m_protocolName),
      m_protocolVersion(other.m_protocolVersion),
      m_transport(other.m_transport),
      m_host(other.m_host),
      m_port(other.m_port),
      m_hasPort(other.m_hasPort),
      m_isHostIPv6(other.m_isHostIPv6),
      m_comment(other.m_comment) {
    const Oskan::LeafTraceScope trace(sLogger(), "KxSipViaHeader copy ctor");
}

void KxSipViaHeader::setTransport(const char* transport) {
    m_transport = KxString(transport).upper();
}

KxSocketImpl::Transport KxSipViaHeader::getTransportParam() const {
    const auto transport = KxSocketImpl::parseTransport(m_transport);
    if (!transport.isValid() && KxSipGrammar::sReadsViasStrictly()) {
        return KxSocketImpl::UDP;
    }
    return transport.get();
}

/** What is no host becomes empty, and is refused later. */
void KxSipViaHeader::setHost(const KxSipHost& host) {
    m_host = host.isValid() ? KxString(host.text()) : KxString(kNothing);
    m_isHostIPv6 = host.isIPv6();
}

unsigned KxSipViaHeader::defaultPort() const {
    const bool isOverTLS = m_transport == "TLS" || m_transport == "TLS-SCTP";
    return isOverTLS && KxSipGrammar::sReadsViasStrictly() ? 5061 : 5060;
}

unsigned KxSipViaHeader::getTTL() const {
    const KxString* const ttl = m_parameters.findValue(sTTL);
    return ttl == nullptr ? 1 : static_cast<unsigned>(KxAscii::toNumber(*ttl));
}

void KxSipViaHeader::setBranchRFC3261() {
    char branch[kMagicCookie.size() + kUuidLength + 1];
    UUID::uuid_create_string(std::copy(kMagicCookie.begin(), kMagicCookie.end(), branch));
    setBranch(KxString(branch, sizeof branch - 1));
}

void KxSipViaHeader::setSource(KxSipText address, std::uint32_t port) {
    const KxString source = address.needed("source address");
    const bool isSame = KxSipGrammar::sReadsViasStrictly() ? KxSipHost::sAreEqual(source, m_host) : source == m_host;
    if (isRPortPresent()) {
        m_parameters.write().setValues({{KxString("rport"), KxString(std::to_string(port))}, {sReceived, source}});
    } else if (!isSame) {
        setReceived(source);
    }
}

bool KxSipViaHeader::compare(const KxHandle<KxSipViaHeader>& other) const {
    if (KxSipGrammar::sReadsViasStrictly()) {
        return !other.isNil() && m_protocolName.equalsNoCase(other->m_protocolName) &&
               m_protocolVersion == other->m_protocolVersion && KxSipHost::sAreEqual(m_host, other->m_host) &&
               getPort() == other->getPort() && m_transport == other->m_transport;
    }
    return !other.isNil() && m_protocolName == other->m_protocolName && m_protocolVersion == other->m_protocolVersion &&
           m_host == other->m_host && m_port == other->m_port && m_transport == other->m_transport;
}

/** The host, with the brackets of an IPv6 reference. */
std::string_view KxSipViaHeader::sTakeHost(KxSipLine& line) {
    line.skipSpace();
    if (line.peek() != '[') {
        return KxAscii::trimEnd(line.token(sDelimeters));
    }
    const std::string_view inside = line.until<']', '\r', '\n'>();
    return {inside.data(), inside.size() + (line.read() == ']' ? 1 : 0)};
}

KxSipFault KxSipViaHeader::parseValue(KxSipLine& line) {
    line.skipSpace();
    constexpr char kUsual[] = "SIP/2.0/UDP ";
    if (KxBytes::startsWith(line.window(), kUsual)) {
        m_protocolName = kSip;
        m_protocolVersion = kVersion;
        m_transport = kUdp;
        line.consume(sizeof kUsual - 1);
    } else {
        parseProtocol(line);
    }
    if (KxSipGrammar::sReadsViasStrictly()) [[unlikely]] {
        return parseStrictly(line);
    }
    return parseAfterTransport<false>(line);
}

/** Reads protocol name, version and transport. */
[[gnu::noinline]] void KxSipViaHeader::parseProtocol(KxSipLine& line) {
    if (KxBytes::startsWith(line.window(), kUsualProtocol)) {
        m_protocolName = kSip;
        m_protocolVersion = kVersion;
        line.consume(sizeof kUsualProtocol - 1);
    } else {
        m_protocolName = KxString(KxAscii::trimEnd(line.until(kSlash)));
        line.read();
        m_protocolVersion = KxString(KxAscii::trimEnd(line.token(kSlash)));
        line.read();
    }
    m_transport = KxString(KxAscii::trimEnd(line.token(sDelimeters))).upper();
}

/** Apart, so that the usual reading needs no more registers. */
[[gnu::noinline]] KxSipFault KxSipViaHeader::parseStrictly(KxSipLine& line) {
    return parseAfterTransport<true>(line);
}

template <bool kStrict>
[[gnu::always_inline]] inline KxSipFault KxSipViaHeader::parseAfterTransport(KxSipLine& line) {
    if constexpr (kStrict) {
        setHost(KxSipHost(sTakeHost(line)));
    } else {
        m_host = KxString(KxAscii::trimEnd(line.token(sDelimeters)));
    }
    int c = KxStreamTokenizer::sDiscardWhite(line);
    for (; c == ':' || c == '(' || c == ';'; c = KxStreamTokenizer::sDiscardWhite(line)) {
        line.read();
        if (c == ':') {
            if (kStrict && (m_hasPort || expectDigit(line, kInvalid))) {
                return KxSipFault(kInvalid);
            }
            m_port = KxStreamTokenizer::sGetUnsigned(line);
            m_hasPort = true;
        } else if (c == '(') {
            m_comment = KxString(line.until<')', '\r', '\n'>()); // an unclosed one must not consume the line end
            line.read();
        } else if (kStrict) {
            m_parameters.write().parse(line);
        } else {
            const std::string_view parameters = KxAscii::trim(line.until<','>());
            if (!parameters.empty()) {
                m_parameters.write().parse(parameters, line.readableEnd());
            }
        }
    }
    if (kStrict && (m_port > kLastPort || (c > ' ' && c != ','))) {
        return KxSipFault(kInvalid);
    }
    return checkValidity();
}

KxSipFault KxSipViaHeader::checkValidity() const {
    const Oskan::TraceScope trace(sLogger(), "KxSipViaHeader::checkValidity");
    if (!m_transport.sharesWith(kUdp)) {
        if (m_transport.empty()) {
            return KxSipFault("Invalid Via header, no transport");
        }
        if (!KxSocketImpl::parseTransport(m_transport).isValid() && !KxSipGrammar::sReadsViasStrictly()) {
            return KxSipFault("Invalid Via header transport");
        }
    }
    if (m_protocolName.empty() || m_protocolVersion.empty() || m_host.empty()) {
        return KxSipFault(kInvalid);
    }
    if (getTTL() > 255) {
        return KxSipFault("Invalid value for ttl parameter in Via header");
    }
    return {};
}

void KxSipViaHeader::serializeValue(KxOutputStream& out) const {
    const bool isUsual = m_protocolName.sharesWith(kSip) && m_protocolVersion.sharesWith(kVersion) && !m_isHostIPv6;
    if (!isUsual || !m_comment.empty()) [[unlikely]] {
        return serializeUnusual(out);
    }
    out.writeAll(std::string_view(kUsualProtocol, sizeof kUsualProtocol - 1), m_transport, ' ', m_host,
                 KxOutputStream::SeparateNumber{m_hasPort, ':', m_port});
    m_parameters.serializeWithSemicolon(out);
}

/** Of any protocol, with a comment, or to an IPv6 address. */
[[gnu::noinline]] void KxSipViaHeader::serializeUnusual(KxOutputStream& out) const {
    out.writeAll(m_protocolName, '/', m_protocolVersion, '/', m_transport);
    if (m_isHostIPv6) {
        out << " [" << m_host << ']';
    } else {
        out << ' ' << m_host;
    }
    if (m_hasPort) {
        out << ':' << m_port;
    }
    if (KxSipGrammar::sReadsViasStrictly()) { // after the parameters, it would be read as part of the last one
        serializeComment(out);
        m_parameters.serializeWithSemicolon(out);
    } else {
        m_parameters.serializeWithSemicolon(out);
        serializeComment(out);
    }
}

void KxSipViaHeader::serializeComment(KxOutputStream& out) const {
    if (!m_comment.empty()) {
        out << " (" << m_comment << ')';
    }
}
