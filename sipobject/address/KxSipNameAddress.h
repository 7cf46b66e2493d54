#pragma once

#include "sipobject/address/KxSipURL.h"

/** A display name and a URI.
    name-addr = [ display-name ] LAQUOT addr-spec RAQUOT, or a bare addr-spec  [RFC 3261 25.1]
    A quoted display name keeps its quotes; an unquoted one may contain only letters, digits, blanks and "-.!%*_+`'~".
    Always written in brackets.      "Bob <sip:h>" -> the same; "sip:h" -> "<sip:h>"

    In the RFC grammar, a display name is a quoted string, with escapes and any UTF-8, or tokens with blanks or tabs
    between them. A URI may have no blanks around or inside it, and one without brackets, in a header, has no "?" and
    ends at ",", ";" and white space. Other text is refused. [RFC 3261 20.10]
    "Bob<sip:h>" -> "Bob <sip:h>"; "Bell, Alexander <sip:h>" -> refused

    The parameters after it belong to the header that contains it. Used by one thread at a time. */
class KX_SIP_API KxSipNameAddress final : public KxObject {
public:
    /** Without display name, and with a URI without scheme. */
    KxSipNameAddress();
    /** Holds a copy of the URI; nil stays nil. In the RFC grammar, a display name that is neither a quoted string nor
        tokens is quoted: {Bell, Alexander} is {"Bell, Alexander"}. Throws KxSipParseError if it has CR, LF or NUL. */
    KxSipNameAddress(const KxString& displayName, const KxHandle<KxURI>& uri);
    KxSipNameAddress(KxSipStdText displayName, const KxHandle<KxURI>& uri)
        : KxSipNameAddress(displayName.line(), uri) {}
    /** Reads a standalone name-address: parameters after a bare SIP URL belong to the URL. Throws as parse does. */
    explicit KxSipNameAddress(const char* text);
    explicit KxSipNameAddress(KxSipText text) : KxSipNameAddress(Unset::Tag) {
        m_standalone = true;
        parse(text);
    }
    /** Copies the URI too. */
    KxSipNameAddress(const KxSipNameAddress& other);
    KxSipNameAddress& operator=(const KxSipNameAddress&) = delete;
    [[nodiscard]] KxSipNameAddress* clone() const override;
    ~KxSipNameAddress() override;

    /** Returns a name-address read from a header value: parameters after a bare SIP URL belong to the header. Throws as
        parse does. */
    static KxHandle<KxSipNameAddress> sConstructFrom(KxInputStream& in);
    /** As sConstructFrom, but returns the fault instead of throwing it; `address` is then unchanged. The functions that
        return a fault are parts of larger operations, and use the log levels of the operation that they are part of. */
    static KxSipFault sConstructFrom(KxSipLine& line, KxHandle<KxSipNameAddress>& address);

    /** As it is written: with its quotes and escapes, if it has any. */
    const KxString& getDisplayName() const { return m_displayName; }
    /** The URI itself, shared. */
    const KxHandle<KxURI>& getURI() const { return m_URI; }
    /** The URI as a SIP URL; nil if it is not one. */
    KxHandle<KxSipURL> getURL() const;
    /** The URI as text; empty without a URI. */
    KxString getURLString() const;
    [[nodiscard]] bool hasBrackets() const { return m_brackets; }
    void setBrackets(bool brackets) { m_brackets = brackets; }

    /** Reads display name and URI, and stops after the URI; the class of the URI decides whether a ">" and a ";" after
        it are consumed; in the RFC grammar, only the ">" is, and a refused text changes nothing. Throws KxSipParseError
        "Invalid SIP Name Address" for a display name of 1024 or more characters, "URL not specified", "Invalid quote in
        KxSipNameAddress", "Invalid Character (c) in name-addr" with the character in place of c, and the errors of the URI's class. */
    void parse(KxInputStream& in);
    /** As parse, but returns the fault instead of throwing it. */
    KxSipFault parse(KxSipLine& line);
    /** As parse, from a text; null reads as empty. */
    void parse(const char* text);
    void parse(KxSipText text);

    /** Writes the name-address. */
    void display(KxOutputStream& out, bool verbose) const override;

    KX_MEM_ACCOUNT_OPERATORS(s_account);

private:
    enum class Unset { Tag };
    explicit KxSipNameAddress(Unset) {}
    /** Has one reference, which a handle takes over. */
    explicit KxSipNameAddress(Held held) : KxObject(held) {}

    static bool isLegalDisplayNameChar(char c);
    KxSipFault parseStrictly(KxSipLine& line);
    KxSipFault parseClassically(KxSipLine& line);
    const char* takeUsualName(const char* begin, const char* end, const char* readable);
    KxSipFault parseDisplayName(const char* begin, const char* end, const char*& uri);
    void setDisplayName(const char* begin, const char* end);

    static Oskan::MemAccount s_account;

    bool m_brackets = false;
    bool m_standalone = false;
    KxString m_displayName;
    KxHandle<KxURI> m_URI;
};

/** Reads into the name-address, or into a new one if the handle is nil. */
KX_SIP_API KxInputStream& operator>>(KxInputStream& in, KxHandle<KxSipNameAddress>& address);
/** Writes the name-address; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxSipNameAddress>& address);
