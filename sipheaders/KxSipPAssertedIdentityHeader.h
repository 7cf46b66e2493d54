#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** P-Asserted-Identity: who the caller or callee is, as a trusted proxy has verified. One object per identity.
    P-Asserted-Identity = "P-Asserted-Identity" HCOLON PAssertedID-value *(COMMA PAssertedID-value)   [RFC 3325 9.1]
    PAssertedID-value = name-addr / addr-spec
    "P-Asserted-Identity: sip:a@h , <tel:+1>" -> two values, "sip:a@h" and "<tel:+1>" */
class KX_HEADERS_API KxSipPAssertedIdentityHeader final : public KxSipAddressFieldHeader<KxSipPAssertedIdentityHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPAssertedIdentityHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipPAssertedIdentityHeader>;

    KxSipPAssertedIdentityHeader() = default;
};
