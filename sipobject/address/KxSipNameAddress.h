#pragma once

#include "sipobject/address/KxSipURL.h"

/** A display name and a URI.
    name-addr = [ display-name ] LAQUOT addr-spec RAQUOT, or a bare addr-spec  [RFC 3261 25.1]
    A quoted display name keeps its quotes; an unquoted one takes letters, digits, blanks and "-.!%*_+`'~" only.
    Always printed in brackets.      "Bob <sip:h>" -> the same; "sip:h" -> "<sip:h>"
    The parameters behind it belong to the header it stands in. Used by one thread at a time. */
class KX_SIP_API KxSipNameAddress final : public KxObject {
public:
    /** No display name and a URI without a scheme. */
    KxSipNameAddress();
    /** Holds a copy of the URI; nil stays nil. */
    KxSipNameAddress(const KxString& displayName, const KxHandle<KxURI>& uri);
    /** Reads a standalone name-address: parameters behind a bare SIP URL are its own. Throws as parse. */
    explicit KxSipNameAddress(const char* text);
    /** The URI is copied too. */
    KxSipNameAddress(const KxSipNameAddress& other);
    KxSipNameAddress& operator=(const KxSipNameAddress&) = delete;
    KxSipNameAddress* clone() const override;
    ~KxSipNameAddress() override;

    /** One from a header's value, where parameters behind a bare SIP URL are the header's. Throws as parse. */
    static KxHandle<KxSipNameAddress> sConstructFrom(KxInputStream& in);
    /** As sConstructFrom, but what is wrong is told, not thrown; the handle then stays as it was. This and read are
        steps of grammars: they go by the log levels of the operation that they are part of. */
    static KxSipFault sRead(KxInputStream& in, KxHandle<KxSipNameAddress>& address);

    const KxString& getDisplayName() const { return m_displayName; }
    /** The URI itself, shared. */
    const KxHandle<KxURI>& getURI() const { return m_URI; }
    /** The URI as a SIP URL, nil when it is none. */
    KxHandle<KxSipURL> getURL() const;
    /** The URI's printed form; empty without one. */
    KxString getURLString() const;
    bool hasBrackets() const { return m_brackets; }
    void setBrackets(bool brackets) { m_brackets = brackets; }

    /** Reads display name and URI; stops behind the URI, a ">" and one ";" consumed as the URI's class does.
        Throws KxSipParseError: "Invalid SIP Name Address" for a display name of 1024 characters and more, "URL not
        specified", "Invalid quote in KxSipNameAddress", "Invalid Character (c) in name-addr" with the character for c;
        and what the URI's class throws. */
    void parse(KxInputStream& in);
    /** As parse, but what is wrong is told, not thrown. */
    KxSipFault read(KxInputStream& in);
    /** As above from a text; null reads as empty. */
    void parse(const char* text);

    /** Writes the printed form. */
    void display(KxOutputStream& out, bool verbose) const override;

    KX_MEM_ACCOUNT_OPERATORS(s_account);

private:
    enum class Unset { Tag };
    explicit KxSipNameAddress(Unset) {}

    static bool isLegalDisplayNameChar(char c);
    KxSipFault readTraced(KxInputStream& in);
    KxSipFault readWhole(KxInputStream& in);
    KxSipFault readDisplayName(const char* begin, const char* end, const char*& uri);
    void setDisplayName(const char* begin, const char* end);

    static Oskan::MemAccount s_account;

    bool m_brackets = false;
    bool m_standalone = false;
    KxString m_displayName;
    KxHandle<KxURI> m_URI;
};

/** Reads into the name-address, a new one where the handle is nil. */
KX_SIP_API KxInputStream& operator>>(KxInputStream& in, KxHandle<KxSipNameAddress>& address);
/** Writes the printed form; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxSipNameAddress>& address);
