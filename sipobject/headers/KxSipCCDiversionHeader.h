#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** CC-Diversion: the address that diverted a call. One object per diversion.
    CC-Diversion = "CC-Diversion" HCOLON name-addr *(SEMI param) *(COMMA ...)   [as Diversion, RFC 5806 4]
    "CC-Diversion: <sip:a>;reason=busy, <sip:b>" -> two values, written as two lines */
class KX_SIP_API KxSipCCDiversionHeader final : public KxSipParameterAddressHeader<KxSipCCDiversionHeader> {
public:
    /** Holds a copy; nil gives an empty name-address. */
    explicit KxSipCCDiversionHeader(const KxHandle<KxSipNameAddress>& address);
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipCCDiversionHeader(const char* text) { parseText(text); }
    explicit KxSipCCDiversionHeader(KxSipText text) { parseText(text.checked()); }

    /** Nil if the URI is not a SIP URL. */
    KxHandle<KxSipURL> getURL() const { return getSipURL(); }
    const KxString& getDisplayName() const { return m_nameAddress->getDisplayName(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipCCDiversionHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kCCDiversion;

private:
    friend class KxSipHeaderOf<KxSipCCDiversionHeader>;

    KxSipCCDiversionHeader() = default;
};
