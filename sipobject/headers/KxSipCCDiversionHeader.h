#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** CC-Diversion: from where a call was diverted, one diversion an object.
    CC-Diversion = "CC-Diversion" HCOLON name-addr *(SEMI param) *(COMMA ...)   [as Diversion, RFC 5806 4]
    "CC-Diversion: <sip:a>;reason=busy, <sip:b>" -> two values, two lines out */
class KX_SIP_API KxSipCCDiversionHeader final : public KxSipParameterAddressHeader<KxSipCCDiversionHeader> {
public:
    /** Holds a copy; nil gives an empty name-address. */
    explicit KxSipCCDiversionHeader(const KxHandle<KxSipNameAddress>& address);
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipCCDiversionHeader(const char* text) { parseText(text); }

    /** Nil when the URI is no SIP URL. */
    KxHandle<KxSipURL> getURL() const { return getSipURL(); }
    const KxString& getDisplayName() const { return m_nameAddress->getDisplayName(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipCCDiversionHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kCCDiversion;

private:
    friend class KxSipHeaderOf<KxSipCCDiversionHeader>;

    KxSipCCDiversionHeader() = default;
};
