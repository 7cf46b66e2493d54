#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** Refer-To: the URI that the recipient is asked to contact.
    Refer-To = ( "Refer-To" / "r" ) HCOLON ( name-addr / addr-spec ) *(SEMI generic-param)   [RFC 3515 2.1]
    The classic grammar reads only the URI, and writes it without brackets unless header parameters are set. A reader of
    the written header, including this class, therefore takes the parameters of the URI for header parameters. Only the
    RFC grammar knows the compact name.      "Refer-To: Bob <sip:h?Replaces=x>" -> "Refer-To: sip:h?Replaces%3Dx"
    In the RFC grammar, nothing is lost.   "Refer-To: Bob <sip:h;x?Replaces=x>;y" -> the same */
class KX_SIP_API KxSipReferToHeader final : public KxSipParameterAddressHeader<KxSipReferToHeader> {
public:
    /** Holds a copy; nil stays nil. */
    explicit KxSipReferToHeader(const KxHandle<KxURI>& uri);
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipReferToHeader(const char* text) { parseText(text); }
    explicit KxSipReferToHeader(KxSipText text) { parseText(text.checked()); }

    /** The URI itself, shared. */
    const KxHandle<KxURI>& getURI() const { return m_nameAddress->getURI(); }
    /** The URI as a SIP URL; nil if it is not one. */
    KxHandle<KxSipURL> getURL() const { return getSipURL(); }

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipReferToHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kReferTo;

private:
    friend class KxSipHeaderOf<KxSipReferToHeader>;
    using Base = KxSipParameterAddressHeader<KxSipReferToHeader>;

    KxSipReferToHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;
};
