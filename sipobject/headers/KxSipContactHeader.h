#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** Contact: an address at which the sender can be reached, or "*" for all. One object per address.
    Contact = ( "Contact" / "m" ) HCOLON ( STAR / (contact-param *(COMMA contact-param)) )   [RFC 3261 20.10]
    For a wildcard the name-address is empty and getURL returns nil. Parameters of a wildcard are read in the RFC
    grammar only.
    "m: Bob <sip:h>;expires=60;q=0.5" -> the same; "Contact: *" -> "Contact: *" */
class KX_SIP_API KxSipContactHeader final : public KxSipParameterAddressHeader<KxSipContactHeader> {
public:
    /** Holds a copy; nil gives an empty name-address. */
    explicit KxSipContactHeader(const KxHandle<KxSipNameAddress>& address);
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipContactHeader(const char* text);
    explicit KxSipContactHeader(KxSipText text) { parseText(text.checked()); }

    [[nodiscard]] bool isWildCard() const { return m_wildCard; }
    /** Nil for a wildcard, and if the URI is not a SIP URL. */
    KxHandle<KxSipURL> getURL() const { return getSipURL(); }
    /** Empty for a wildcard. */
    KxString getDisplayName() const;

    KxString getQValue() const { return getParameter("q"); }
    void setQValue(const KxString& q) { setParameter("q", q); }
    void setQValue(KxSipStdText q) { setQValue(q.line()); }
    void removeQValue() { removeParameter("q"); }
    /** Seconds, as text; nil when absent. */
    KxString getExpires() const { return getParameter("expires"); }
    void setExpires(const KxString& seconds) { setParameter("expires", seconds); }
    void setExpires(KxSipStdText seconds) { setExpires(seconds.line()); }
    void removeExpires() { removeParameter("expires"); }
    void setAction(const KxString& action) { setParameter("action", action); }
    void setAction(KxSipStdText action) { setAction(action.line()); }
    void removeAction() { removeParameter("action"); }
    /** Written in parentheses after the parameters. Set by the application only; never read from a message. */
    const KxString& getComment() const { return m_comment; }
    void setComment(const KxString& comment) { m_comment = comment; }
    void setComment(KxSipStdText comment) { setComment(comment.line()); }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipContactHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kContact;

private:
    friend class KxSipHeaderOf<KxSipContactHeader>;
    using Base = KxSipParameterAddressHeader<KxSipContactHeader>;

    KxSipContactHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    bool m_wildCard = false;
    KxString m_comment;
};
