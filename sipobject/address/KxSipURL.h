#pragma once

#include "sipobject/address/KxURI.h"
#include "util/KxLazyParameters.h"
#include "util/KxSocketImpl.h"

#include <cstdint>

/** What the "user" parameter of a SIP URL says. */
enum KxUserParam { KX_USER_NONE = 0, KX_USER_PHONE = 1 };

/** A SIP URL: user, password, host, port, parameters and headers.
    SIP-URI = "sip:" [ userinfo ] hostport uri-parameters [ headers ]         [RFC 3261 19.1.1]

    Differs from the RFC on purpose: "sips" is refused; nothing is percent-decoded but the headers; hosts are kept as
    written and know no IPv6 brackets, so a colon always starts the port; headers are separated by ";" and "&" is an
    ordinary character in them, while in front of them it counts as an opening bracket; quotes may stand in the user.
    "SIP:bob:pw@h:5070;lr" -> "sip:bob:pw@h:5070;lr"

    A copy is changed by itself. Used by one thread at a time. */
class KX_SIP_API KxSipURL final : public KxURI {
public:
    static const KxConstString sToken;
    /** "5060" */
    static const KxConstString DEFAULT_PORT_STRING;

    KxSipURL();
    /** Reads a standalone URL. Throws KxSipParseError. */
    explicit KxSipURL(const char* text);
    KxSipURL(const KxSipURL& other);
    KxSipURL* clone() const override;

    bool hasParameters() const override;
    bool hasHeaders() const override;
    KxString getString() const override;
    /** Reads one URL. Stops unread before a comma outside the user; behind a ">" one ";" is consumed; without brackets
        and not standalone, the ";" behind the host is consumed and ends it.
        Throws KxSipParseError: "Scheme is not SIP", "Sip URL wrong format ("@" present without a user part)", "Sip URL
        wrong format", "Illegal URL construct", "Sip URL, Double quote mismatch" and those of parseHeader; what was read
        until then stays set. */
    void parse(KxInputStream& in) override;
    /** As above from a text; null reads as empty. */
    void parse(const char* text);
    virtual std::size_t numParameters() const;
    virtual std::size_t numHeaders() const;

    void display(KxOutputStream& out, bool verbose) const override;

    /** Reads the headers behind the "?", up to a ">" (consumed) or the end. Throws KxSipParseError: "SIP URL Header
        doesn't have Key/Value pair (1)\n" where no "=" ends a name, or it is empty, "SIP URL Header key doesn't have a
        value (1)\n" at the end of the part, and the same with (2) at a ";". */
    void parseHeader(KxInputStream& in);

    const KxString& getUser() const { return m_user; }
    const KxString& getUserPassword() const { return m_password; }
    const KxString& getHost() const { return m_host; }
    /** The port, or the default of the transport: 5061 for TLS, else 5060. */
    std::uint32_t getPort() const;
    bool hasPort() const { return m_hasPort; }
    /** 1 when absent. */
    std::int64_t getTTL() const;
    KxUserParam getUserParam() const;
    KxString getMethodParam() const { return getParameter("method"); }
    KxString getMAddrParam() const { return getParameter("maddr"); }
    /** UDP when absent or unknown; an unknown one is warned of on the logger
        "tandril.kx.KxSipURL.UnknownTransportInContact". */
    KxSocketImpl::Transport getTransportParam() const;
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    KxString getHeader(std::string_view name) const { return m_headers.getValue(name); }
    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    KxHandle<KxParameters> getHeaders() const { return m_headers.handle(); }

    void setParameter(std::string_view name, const KxString& value) { m_parameters.write().setValue(name, value); }
    void removeParameter(std::string_view name) { m_parameters.removeValue(name); }
    void clearParameters() { m_parameters.clear(); }
    void setMAddrParam(const KxString& value) { setParameter("maddr", value); }
    void setTransportParam(KxSocketImpl::Transport transport);
    void removeHeader(std::string_view name) { m_headers.removeValue(name); }
    void clearHeaders() { m_headers.clear(); }

    /** Alike as this library judges it: user, host and password byte by byte, ports with the stored one here against
        the effective one there, transports, and the parameters that both lists can hold; one extra parameter on either
        side does not matter. */
    bool operator==(const KxSipURL& other) const;

private:
    friend class KxURI;
    friend class KxSipURLParser;

    KxSipFault read(KxInputStream& in);
    void setHost(const char* text);
    KxSipFault readTraced(KxInputStream& in);
    bool parametersMatch(const KxSipURL& other) const;
    bool headersMatch(const KxSipURL& other) const;

    KxString m_user;
    KxString m_password;
    KxString m_host;
    std::uint32_t m_port = 5060;
    bool m_hasPort = false;
    KxLazyParameters m_parameters;
    KxLazyParameters m_headers;
};

/** Writes the printed form; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxSipURL>& url);
