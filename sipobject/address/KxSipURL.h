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

    In the RFC grammar it is a SIP or SIPS URI: hosts may be IPv6 references and are checked, as ports are; escapes are
    kept; headers are separated by "&"; a URL without brackets in a header ends at a comma, too; text that does not fit
    is refused. [RFC 3261 25.1, RFC 5630, RFC 5954]
    "SIPS:a&b@[2001:db8::1]?Subject=x%20y&Priority=" -> "sips:a&b@[2001:db8::1]?Subject=x%20y&Priority="

    A copy shares no data with the original that can be changed. Used by one thread at a time. */
class KX_SIP_API KxSipURL final : public KxURI {
public:
    static const KxConstString sToken;
    static const KxConstString sSecureToken;
    static const KxConstString DEFAULT_PORT_STRING;

    KxSipURL() : KxURI(sToken, true) {}
    /** Reads a standalone URL. Throws KxSipParseError. */
    explicit KxSipURL(const char* text) : KxSipURL() {
        m_standalone = true;
        parse(text);
    }
    explicit KxSipURL(KxSipText text) : KxSipURL() {
        m_standalone = true;
        parse(text);
    }
    KxSipURL(const KxSipURL& other);
    [[nodiscard]] KxSipURL* clone() const override;

    [[nodiscard]] bool hasParameters() const override { return !m_parameters.empty(); }
    [[nodiscard]] bool hasHeaders() const override { return !m_headers.empty(); }
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

    /** Reads the headers after the "?", up to a ">" (consumed) or the end. In the RFC grammar they are kept as written,
        and may have an empty value; those of a URL that is neither in brackets nor standalone end at "," and ";", too.
        Throws KxSipParseError "SIP URL Header
        doesn't have Key/Value pair (1)\n" if a name is empty or has no "=" after it, and "SIP URL Header key doesn't
        have a value (1)\n" for an empty value. The texts have (1) for the last header, and (2) for one that ends at a
        ";". */
    void parseHeader(KxInputStream& in);

    const KxString& getUser() const { return m_user; }
    const KxString& getUserPassword() const { return m_password; }
    /** An IPv6 address is without its brackets, as sockets and KxInetAddress want it. Brackets are written. */
    const KxString& getHost() const { return m_host; }
    /** Whether the host is an IPv6 address, so that it needs brackets in a text. */
    [[nodiscard]] bool isHostIPv6() const { return (m_form & kIPv6Host) != 0; }
    /** Whether the scheme is "sips": every hop must be protected by TLS. RFC grammar only. [RFC 5630] */
    [[nodiscard]] bool isSecure() const { return (m_form & kSecure) != 0; }
    /** The port, or the default of scheme and transport: 5061 for sips and for TLS, else 5060. */
    std::uint32_t getPort() const;
    [[nodiscard]] bool hasPort() const { return m_hasPort; }
    /** 1 when absent. */
    std::int64_t getTTL() const;
    KxUserParam getUserParam() const;
    KxString getMethodParam() const { return getParameter("method"); }
    KxString getMAddrParam() const { return getParameter("maddr"); }
    /** UDP when absent or unknown; an unknown transport logs a warning on the logger
        "tandril.kx.KxSipURL.UnknownTransportInContact". For sips, "tcp", an absent and an unknown one are TLS, and "ws"
        is WSS. [RFC 5630 3.1.3, RFC 7118 5.2.2] */
    KxSocketImpl::Transport getTransportParam() const;
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    /** Nil when absent. Without escapes, in either grammar. */
    KxString getHeader(std::string_view name) const;
    /** The lists themselves, shared; never nil. In the RFC grammar, names and values are as written, with escapes. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    KxHandle<KxParameters> getHeaders() const { return m_headers.handle(); }

    // Parts that are set are written, and read again as the same part. Other text throws KxSipParseError "Invalid user
    // in SIP URL" (or password, host, port), and the URL is unchanged. No part may contain blanks, control characters
    // and any of <>&:@ ; quotes are allowed in pairs in the user only, and hide &:@ between them. In the RFC grammar,
    // no part may contain quotes, and user and password may contain "&".

    /** No text removes the user, and the password with it. */
    void setUser(KxSipText user);
    /** The user part needs a user to be written: throws KxSipParseError if there is none. May not contain any of ,;?
        either, unless the grammar is the RFC's. No text removes the password. */
    void setUserPassword(KxSipText password);
    /** May not contain any of ,;? either, so no IPv6 reference. In the RFC grammar: a host name, an IPv4 address, or an
        IPv6 address with or without brackets. Throws KxSipParseError for no text. */
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

    /** Whether the URLs are equivalent. In the RFC grammar: by RFC 3261 19.1.4, where IPv6 addresses compare by value.
        In the classic one, the rules differ from the RFC's. Compares user, host
        and password byte by byte, the stored port of this URL with getPort of the other, and the transports. One list
        of parameters may have one parameter more than the other; each parameter of the shorter list except transport
        must have an equal one in the longer list, ignoring letter case. Either both URLs or neither have headers, and
        each header of the shorter list must have an equal one in the longer list. */
    [[nodiscard]] bool operator==(const KxSipURL& other) const;

private:
    /** Has one reference, which a handle takes over. */
    explicit KxSipURL(Held held) : KxURI(sToken, held) {}
    friend class KxURI;
    friend class KxSipRequest;
    template <bool kStrict>
    friend class KxSipURLParser;
    template <bool kStrict>
    friend class KxSipURLHeadersParser;
    template <bool kStrict>
    friend class KxSipURLParts;
    template <bool kStrict>
    friend class KxSipUsualURL;

    /** What is seldom, and of the RFC grammar only. Bits of one number, so that writing asks once. */
    enum Form : std::uint8_t { kSecure = 1, kIPv6Host = 2, kEmptyPassword = 4 };

    void setForm(Form form, bool on) { m_form = static_cast<std::uint8_t>(on ? m_form | form : m_form & ~form); }
    template <bool kStrict>
    KxSipFault parseBy(KxSipLine& line);
    /** Reads any URL; the usual ones are read by KxSipUsualURL. */
    template <bool kStrict>
    bool parseUsual(std::string_view text);
    template <bool kStrict>
    KxSipFault parseUnusual(KxSipLine& line);
    void displaySeldom(KxOutputStream& out) const;
    void displayHeaders(KxOutputStream& out) const;
    static KxParameters::Pair sDecoded(const KxParameters::Pair& header);
    bool isEquivalentTo(const KxSipURL& other) const;

    KxString m_user;
    KxString m_password;
    KxString m_host;
    std::uint32_t m_port = 5060;
    bool m_hasPort = false;
    std::uint8_t m_form = 0;
    KxSharedParameters m_parameters;
    KxSharedParameters m_headers;
};

/** Writes the URL; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxSipURL>& url);
