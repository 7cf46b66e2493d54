#pragma once

#include "sipobject/headers/KxSipDialogPartyHeader.h"

/** From: the sender of the request, with the tag that is the caller's part of the dialog identifier.
    From = ( "From" / "f" ) HCOLON ( name-addr / addr-spec ) *(SEMI from-param)   [RFC 3261 20.20]
    In the classic grammar, transport, maddr, ttl and the headers are removed from a URL with parameters.
    "From: Bob <sip:h>;tag=1" -> the same */
class KX_SIP_API KxSipFromHeader final : public KxSipDialogPartyHeader<KxSipFromHeader> {
public:
    /** Both hold copies; nil gives an empty name-address or list. */
    KxSipFromHeader(const KxHandle<KxSipNameAddress>& address, const KxHandle<KxParameters>& parameters = {})
        : KxSipDialogPartyHeader(address, parameters) {}
    KxSipFromHeader(const KxHandle<KxSipURL>& url, const KxHandle<KxParameters>& parameters)
        : KxSipDialogPartyHeader(url, parameters) {}
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipFromHeader(const char* text) { parseTraced(text); }
    explicit KxSipFromHeader(KxSipText text) { parseTraced(text.checked()); }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipFromHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kFrom;
    static constexpr const char* kInvalid = "Invalid From header";
    static constexpr KxLiteral kTraceAddress{" ctor (1)"};
    static constexpr KxLiteral kTraceURL{" ctor (2)"};
    static constexpr KxLiteral kTraceText{" ctor (3)"};
    static constexpr KxLiteral kTraceCopy{" copy ctor"};

private:
    friend class KxSipHeaderOf<KxSipFromHeader>;
    friend class KxSipParameterAddressHeader<KxSipFromHeader>;

    KxSipFromHeader() = default;
};
