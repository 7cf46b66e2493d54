#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** P-Associated-URI: the URIs that the registrar has for the user, in the answer to REGISTER. One object per URI; the
    first one is the default identity.
    P-Associated-URI = "P-Associated-URI" HCOLON [ p-aso-uri-spec *(COMMA p-aso-uri-spec) ]    [RFC 7315 5.1]
    p-aso-uri-spec = name-addr *(SEMI ai-param)
    A URI may be without brackets.      "P-Associated-URI: <sip:a@h>, <tel:+1>" -> two values, two lines out */
class KX_HEADERS_API KxSipPAssociatedURIHeader final : public KxSipAddressFieldHeader<KxSipPAssociatedURIHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPAssociatedURIHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipPAssociatedURIHeader>;

    KxSipPAssociatedURIHeader() = default;
};
