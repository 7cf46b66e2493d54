#pragma once

#include "sipobject/address/KxSipNameAddress.h"
#include "sipobject/headers/KxSipHeaderOf.h"

/** Refer-To: the URI that the recipient is asked to contact.
    Refer-To = ( "Refer-To" / "r" ) HCOLON ( name-addr / addr-spec ) *(SEMI generic-param)   [RFC 3515 2.1]
    Only the URI is kept, and it is written without brackets. A reader of the written header, including this class,
    therefore takes the parameters of the URI for header parameters. Only the RFC grammar knows the compact name.
    "Refer-To: Bob <sip:h?Replaces=x>" -> "Refer-To: sip:h?Replaces%3Dx" */
class KX_SIP_API KxSipReferToHeader final : public KxSipHeaderOf<KxSipReferToHeader> {
public:
    /** Holds a copy; nil stays nil. */
    explicit KxSipReferToHeader(const KxHandle<KxURI>& uri);
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipReferToHeader(const char* text) { parseText(text); }
    explicit KxSipReferToHeader(KxSipText text) { parseText(text.checked()); }
    KxSipReferToHeader(const KxSipReferToHeader& other);

    /** The URI itself, shared. */
    const KxHandle<KxURI>& getURI() const { return m_URI; }
    /** The URI as a SIP URL; nil if it is not one. */
    KxHandle<KxSipURL> getURL() const;

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipReferToHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kReferTo;

private:
    friend class KxSipHeaderOf<KxSipReferToHeader>;

    KxSipReferToHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxHandle<KxURI> m_URI;
};
