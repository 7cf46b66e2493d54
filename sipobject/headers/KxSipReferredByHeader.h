#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** Referred-By: the party that asked for this request.
    Referred-By = ( "Referred-By" / "b" ) HCOLON referrer-uri *(SEMI param)   [RFC 3892 3]
    Only the RFC grammar knows the compact name.      "Referred-By: sip:h;a=1" -> "Referred-By: <sip:h>;a=1" */
class KX_SIP_API KxSipReferredByHeader final : public KxSipParameterAddressHeader<KxSipReferredByHeader> {
public:
    /** Both hold copies; nil gives an empty name-address or list. */
    KxSipReferredByHeader(const KxHandle<KxSipNameAddress>& address, const KxHandle<KxParameters>& parameters);
    KxSipReferredByHeader(const KxHandle<KxSipURL>& url, const KxHandle<KxParameters>& parameters)
        : KxSipParameterAddressHeader(url, parameters) {}
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipReferredByHeader(const char* text) { parseText(text); }
    explicit KxSipReferredByHeader(KxSipText text) { parseText(text.checked()); }

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipReferredByHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kReferredBy;

private:
    friend class KxSipHeaderOf<KxSipReferredByHeader>;

    KxSipReferredByHeader() = default;
};
