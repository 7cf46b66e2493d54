#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"
#include "sipobject/headers/KxSipNumberText.h"
#include "sipobject/headers/KxSipQValue.h"

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
    /** Holds a copy; nil gives an empty name-address. The header is no wildcard then; its parameters stay. */
    void setNameAddress(const KxHandle<KxSipNameAddress>& address) {
        Base::setNameAddress(address);
        m_wildCard = false;
    }
    /** Nil for a wildcard, and if the URI is not a SIP URL. */
    KxHandle<KxSipURL> getURL() const { return getSipURL(); }
    /** Empty for a wildcard. */
    KxString getDisplayName() const;

    KxString getQValue() const { return getParameter("q"); }
    void setQValue(const KxString& q) { setParameter("q", q); }
    void setQValue(KxSipStdText q) { setQValue(q.line()); }
    void removeQValue() { removeParameter("q"); }
    /** The preference in thousandths, 0 to 1000: 1000 when absent, none if it is not a qvalue. [RFC 3261 20.10] */
    [[nodiscard]] std::optional<std::uint32_t> getQValueInThousandths() const { return KxSipQValue::sOf(m_parameters); }
    /** Writes the shortest form: 500 is "0.5". Throws KxSipParseError "Invalid q value" above 1000. */
    void setQValueInThousandths(std::uint32_t q) { setQValue(KxSipQValue::sWrite(q)); }
    /** Seconds, as text; nil when absent. */
    KxString getExpires() const { return getParameter("expires"); }
    void setExpires(const KxString& seconds) { setParameter("expires", seconds); }
    void setExpires(KxSipStdText seconds) { setExpires(seconds.line()); }
    void removeExpires() { removeParameter("expires"); }
    /** The same as a number, at most 4294967295; none when absent or not a number. A registrar takes what is not a
        number for 3600. [RFC 3261 20.10] */
    [[nodiscard]] std::optional<std::uint32_t> getExpiresInSeconds() const {
        return KxSipNumberText::sSeconds(getExpires());
    }
    void setExpiresInSeconds(std::uint32_t seconds) { setExpires(KxSipNumberText::sText(seconds)); }
    /** "proxy" or "redirect"; nil when absent. [RFC 2543 6.13] */
    KxString getAction() const { return getParameter("action"); }
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
