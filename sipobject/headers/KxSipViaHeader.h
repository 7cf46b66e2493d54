#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxSharedParameters.h"
#include "util/KxSocketImpl.h"

class KxSipHost;

/** Via: one hop of the path that a request has taken.
    Via = ( "Via" / "v" ) HCOLON via-parm *(COMMA via-parm)                   [RFC 3261 20.42]
    via-parm = sent-protocol LWS sent-by *( SEMI via-params )
    Differs from the RFC on purpose: protocol name and version may be any non-empty text; the host is a name or an IPv4
    address, so an IPv6 reference is refused; a comma ends the parameters even inside quotes; a comment before the
    parameters is kept and is written after them.
    "SIP / 2.0 / udp host:5070 (c);branch=x" -> "SIP/2.0/UDP host:5070;branch=x (c)"

    In the RFC grammar, the transport may be any token, the host an IPv6 reference, and a parameter a quoted string with
    commas; another host, a port that is no number up to 65535, and text after the value are refused. [RFC 3261 25.1,
    RFC 5954 4.1] "SIP/2.0/foo [2001:db8::1]:5070;a="x,y"" -> "SIP/2.0/FOO [2001:db8::1]:5070;a="x,y"" */
class KX_SIP_API KxSipViaHeader final : public KxSipHeaderOf<KxSipViaHeader> {
public:
    /** Throws KxSipParseError for an unknown transport or an empty host, with the same texts as reading. In the RFC
        grammar, the transport may be any token, and the host is checked; an IPv6 address may lack its brackets. */
    KxSipViaHeader(const char* host, unsigned port, const char* transport);
    KxSipViaHeader(KxSipAnyText host, unsigned port, KxSipAnyText transport)
        : KxSipViaHeader(host.line().c_str(), port, transport.line().c_str()) {}
    KxSipViaHeader(const KxSipViaHeader& other);

    const char* getProtocolName() const { return m_protocolName.c_str(); }
    const char* getProtocolVersion() const { return m_protocolVersion.c_str(); }
    /** In upper case. */
    const char* getTransport() const { return m_transport.c_str(); }
    /** Stored in upper case, unchecked. */
    void setTransport(const char* transport);
    void setTransport(KxSipText transport) { setTransport(transport.line().c_str()); }
    /** The transport as an enumerator. It must be a known one; reading and the constructors check that, but
        setTransport does not. In the RFC grammar, which keeps others, they are UDP; getTransport gives their text. */
    KxSocketImpl::Transport getTransportParam() const;
    /** An IPv6 address is without its brackets, as sockets and KxInetAddress want it. Brackets are written. */
    const char* getHost() const { return m_host.c_str(); }
    /** Whether the host is an IPv6 address, so that it needs brackets in a text. */
    [[nodiscard]] bool isHostIPv6() const { return m_isHostIPv6; }
    /** If no port was given: 5060 or, in the RFC grammar, the default of the transport. [RFC 3261 18.1.1] */
    unsigned getPort() const { return m_hasPort ? m_port : defaultPort(); }
    [[nodiscard]] bool isPortPresent() const { return m_hasPort; }
    const char* getComment() const { return m_comment.c_str(); }

    KxString getBranch() const { return m_parameters.getValue(sBranch); }
    void setBranch(const KxString& branch) { setParameter(sBranch, branch); }
    void setBranch(KxSipStdText branch) { setBranch(branch.line()); }
    /** Sets a new branch: the magic cookie followed by a UUID. [RFC 3261 8.1.1.7] */
    void setBranchRFC3261();
    void removeBranch() { m_parameters.removeValue(sBranch); }
    /** This and "received" are as written: an IPv6 address may have brackets, which KxInetAddress reads, too. */
    KxString getMaddr() const { return m_parameters.getValue(sMAddr); }
    void setMaddr(const KxString& address) { setParameter(sMAddr, address); }
    void setMaddr(KxSipStdText address) { setMaddr(address.line()); }
    void removeMaddr() { m_parameters.removeValue(sMAddr); }
    KxString getReceived() const { return m_parameters.getValue(sReceived); }
    void setReceived(const KxString& address) { setParameter(sReceived, address); }
    void setReceived(KxSipStdText address) { setReceived(address.line()); }
    void removeReceived() { m_parameters.removeValue(sReceived); }
    /** 1 when absent; a negative value reads as a large one. */
    unsigned getTTL() const;
    void setTTL(const KxString& ttl) { setParameter(sTTL, ttl); }
    void setTTL(KxSipStdText ttl) { setTTL(ttl.line()); }
    void removeTTL() { m_parameters.removeValue(sTTL); }
    [[nodiscard]] bool isHiddenPresent() const { return m_parameters.isPresent(sHidden); }
    void setHidden() { setParameter(sHidden, KxString("")); }
    void removeHidden() { m_parameters.removeValue(sHidden); }
    [[nodiscard]] bool isRPortPresent() const { return m_parameters.isPresent("rport"); }
    /** Notes where a received request came from: the address as "received", if it is not the host here or if "rport" is
        there; and the port as the value of "rport", if that is there. [RFC 3261 18.2.1, RFC 3581 4] */
    void setSource(KxSipText address, std::uint32_t port);
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    [[nodiscard]] bool isParameterPresent(std::string_view name) const { return m_parameters.isPresent(name); }
    void setParameter(std::string_view name, const KxString& value) { m_parameters.write().setValue(name, value); }
    void setParameter(std::string_view name, KxSipStdText value) {
        setParameter(KxSipText(name).checked().view(), value.line());
    }
    void removeParameter(std::string_view name) { m_parameters.removeValue(name); }
    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }

    /** Whether both have the same sent-protocol and sent-by, where a missing port is 5060; false for nil. In
        the RFC grammar, a missing port is the default of the transport, IPv6 addresses compare by value, and letter
        case is ignored. */
    [[nodiscard]] bool compare(const KxHandle<KxSipViaHeader>& other) const;

    /** The beginning of each branch that was made as RFC 3261 says. [RFC 3261 8.1.1.7] */
    static constexpr std::string_view kMagicCookie = "z9hG4bK";
    static constexpr const char* sSentBy = "sent-by";
    static constexpr const char* sProtocolVersion = "2.0";
    static constexpr const char* sBranch = "branch";
    static constexpr const char* sHidden = "hidden";
    static constexpr const char* sMAddr = "maddr";
    static constexpr const char* sReceived = "received";
    static constexpr const char* sTTL = "ttl";

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipViaHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kVia;

private:
    friend class KxSipHeaderOf<KxSipViaHeader>;

    KxSipViaHeader();
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;
    void parseProtocol(KxSipLine& line);
    void serializeUnusual(KxOutputStream& out) const;
    void serializeComment(KxOutputStream& out) const;
    KxSipFault parseStrictly(KxSipLine& line);
    template <bool kStrict>
    KxSipFault parseAfterTransport(KxSipLine& line);
    KxSipFault checkValidity() const;
    static std::string_view sTakeHost(KxSipLine& line);
    void setHost(const KxSipHost& host);
    unsigned defaultPort() const;

    KxSharedParameters m_parameters;
    KxString m_protocolName;
    KxString m_protocolVersion;
    KxString m_transport;
    KxString m_host;
    std::uint32_t m_port = 5060;
    bool m_hasPort = false;
    bool m_isHostIPv6 = false; // RFC grammar only
    KxString m_comment;
};
