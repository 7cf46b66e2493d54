#pragma once

#include "sipobject/KxSipStdText.h"
#include "sipobject/address/KxURI.h"
#include "util/KxSharedParameters.h"
#include "util/KxSocketImpl.h"

#include <cstdint>

/** The value of the "user" parameter of a SIP URL. */
enum KxUserParam { KX_USER_NONE = 0, KX_USER_PHONE = 1 };

/** A SIP URL: user, password, host, port, parameters and headers.
    SIP-URI = "sip:" [ userinfo ] hostport uri-parameters [ headers ]         [RFC 3261 19.1.1]

    Differs from the RFC on purpose: "sips" is refused; only the headers are percent-decoded; hosts are kept as written,
    without support for IPv6 brackets, so a colon always starts the port; headers are separated by ";", and "&" is an
    ordinary character in them, but before them it is read as an opening bracket; the user may contain quotes.
    "SIP:bob:pw@h:5070;lr" -> "sip:bob:pw@h:5070;lr"

    A copy shares no data with the original that can be changed. Used by one thread at a time. */
class KX_SIP_API KxSipURL final : public KxURI {
public:
    static const KxConstString sToken;
    static const KxConstString DEFAULT_PORT_STRING;

    KxSipURL();
    /** Reads a standalone URL. Throws KxSipParseError. */
    explicit KxSipURL(const char* text);
    explicit KxSipURL(KxSipText text) : KxSipURL() {
        m_standalone = true;
        parse(text);
    }
    KxSipURL(const KxSipURL& other);
    [[nodiscard]] KxSipURL* clone() const override;

    [[nodiscard]] bool hasParameters() const override;
    [[nodiscard]] bool hasHeaders() const override;
    KxString getString() const override;
    /** Reads one URL. Reading stops before a comma outside the user, which stays unread; one ";" after a ">" is
        consumed; if the URL is neither in brackets nor standalone, a ";" after the host is consumed and ends it.
        Throws KxSipParseError: "Scheme is not SIP", "Sip URL wrong format ("@" present without a user part)", "Sip URL
        wrong format", "Illegal URL construct", "Sip URL, Double quote mismatch" and the errors of parseHeader; the
        parts read before the error stay set. */
    void parse(KxInputStream& in) override;
    /** As parse, but returns the fault instead of throwing it. */
    KxSipFault parse(KxSipLine& line);
    /** As parse, from a text; null reads as empty. */
    void parse(const char* text);
    void parse(KxSipText text);
    virtual std::size_t numParameters() const;
    virtual std::size_t numHeaders() const;

    void display(KxOutputStream& out, bool verbose) const override;

    /** Reads the headers after the "?", up to a ">" (consumed) or the end. Throws KxSipParseError "SIP URL Header
        doesn't have Key/Value pair (1)\n" if a name is empty or has no "=" after it, and "SIP URL Header key doesn't
        have a value (1)\n" for an empty value. The texts have (1) for the last header, and (2) for one that ends at a
        ";". */
    void parseHeader(KxInputStream& in);

    const KxString& getUser() const { return m_user; }
    const KxString& getUserPassword() const { return m_password; }
    const KxString& getHost() const { return m_host; }
    /** The port, or the default of the transport: 5061 for TLS, else 5060. */
    std::uint32_t getPort() const;
    [[nodiscard]] bool hasPort() const { return m_hasPort; }
    /** 1 when absent. */
    std::int64_t getTTL() const;
    KxUserParam getUserParam() const;
    KxString getMethodParam() const { return getParameter("method"); }
    KxString getMAddrParam() const { return getParameter("maddr"); }
    /** UDP when absent or unknown; an unknown transport logs a warning on the logger
        "tandril.kx.KxSipURL.UnknownTransportInContact". */
    KxSocketImpl::Transport getTransportParam() const;
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    KxString getHeader(std::string_view name) const { return m_headers.getValue(name); }
    /** The lists themselves, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    KxHandle<KxParameters> getHeaders() const { return m_headers.handle(); }

    // Parts that are set are written, and read again as the same part. Other text throws KxSipParseError "Invalid user
    // in SIP URL" (or password, host, port), and the URL is unchanged. No part may contain blanks, control characters
    // and any of <>&:@ ; quotes are allowed in pairs in the user only, and hide &:@ between them.

    /** No text removes the user, and the password with it. */
    void setUser(KxSipText user);
    /** The user part needs a user to be written: throws KxSipParseError if there is none. May not contain any of ,;?
        either. No text removes the password. */
    void setUserPassword(KxSipText password);
    /** May not contain any of ,;? either, so no IPv6 reference. Throws KxSipParseError for no text. */
    void setHost(KxSipText host);
    /** At most 65535. */
    void setPort(std::uint32_t port);
    /** The port is then the default of the transport. */
    void removePort();
    void setParameter(std::string_view name, const KxString& value) { m_parameters.write().setValue(name, value); }
    void setParameter(std::string_view name, KxSipStdText value) {
        setParameter(KxSipText(name).checked().view(), value.line());
    }
    void removeParameter(std::string_view name) { m_parameters.removeValue(name); }
    void clearParameters() { m_parameters.clear(); }
    void setMAddrParam(const KxString& value) { setParameter("maddr", value); }
    void setMAddrParam(KxSipStdText value) { setMAddrParam(value.line()); }
    void setTransportParam(KxSocketImpl::Transport transport);
    void removeHeader(std::string_view name) { m_headers.removeValue(name); }
    void clearHeaders() { m_headers.clear(); }

    /** Whether the URLs are equivalent by the rules of this library, which differ from the RFC's. Compares user, host
        and password byte by byte, the stored port of this URL with getPort of the other, and the transports. One list
        of parameters may have one parameter more than the other; each parameter of the shorter list except transport
        must have an equal one in the longer list, ignoring letter case. Either both URLs or neither have headers, and
        each header of the shorter list must have an equal one in the longer list. */
    [[nodiscard]] bool operator==(const KxSipURL& other) const;

private:
    friend class KxURI;
    friend class KxSipURLParser;

    bool parametersMatch(const KxSipURL& other) const;
    bool headersMatch(const KxSipURL& other) const;

    KxString m_user;
    KxString m_password;
    KxString m_host;
    std::uint32_t m_port = 5060;
    bool m_hasPort = false;
    KxSharedParameters m_parameters;
    KxSharedParameters m_headers;
};

/** Writes the URL; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxSipURL>& url);
