#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** P-Preferred-Identity: which of its identities a caller wants the trusted proxy to assert. One object per identity.
    P-Preferred-Identity = "P-Preferred-Identity" HCOLON PPreferredID-value
                           *(COMMA PPreferredID-value)                        [RFC 3325 9.2]
    PPreferredID-value = name-addr / addr-spec
    "P-Preferred-Identity: "C, J" <sip:a@h>" -> the same */
class KX_HEADERS_API KxSipPPreferredIdentityHeader final
    : public KxSipAddressFieldHeader<KxSipPPreferredIdentityHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPPreferredIdentityHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipPPreferredIdentityHeader>;

    KxSipPPreferredIdentityHeader() = default;
};
