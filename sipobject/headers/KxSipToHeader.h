#pragma once

#include "sipobject/headers/KxSipDialogPartyHeader.h"

/** To: the recipient of the request, with the tag that is the callee's part of the dialog identifier.
    To = ( "To" / "t" ) HCOLON ( name-addr / addr-spec ) *(SEMI to-param)     [RFC 3261 20.39]
    In the classic grammar, transport, maddr, ttl and the headers are removed from a URL with parameters.
    "To: Bob <sip:h>;tag=1" -> the same */
class KX_SIP_API KxSipToHeader final : public KxSipDialogPartyHeader<KxSipToHeader> {
public:
    /** Both hold copies; nil gives an empty name-address or list. */
    KxSipToHeader(const KxHandle<KxSipNameAddress>& address, const KxHandle<KxParameters>& parameters = {})
        : KxSipDialogPartyHeader(address, parameters) {}
    KxSipToHeader(const KxHandle<KxSipURL>& url, const KxHandle<KxParameters>& parameters)
        : KxSipDialogPartyHeader(url, parameters) {}
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipToHeader(const char* text) { parseTraced(text); }
    explicit KxSipToHeader(KxSipText text) { parseTraced(text.checked()); }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipToHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kTo;
    static constexpr const char* kInvalid = "Invalid To header";
    static constexpr KxLiteral kTraceAddress{" ctor(1)"};
    static constexpr KxLiteral kTraceURL{" ctor(2)"};
    static constexpr KxLiteral kTraceText{" ctor(3)"};
    static constexpr KxLiteral kTraceCopy{" copy ctor"};

private:
    friend class KxSipHeaderOf<KxSipToHeader>;
    friend class KxSipParameterAddressHeader<KxSipToHeader>;

    KxSipToHeader() = default;
};
