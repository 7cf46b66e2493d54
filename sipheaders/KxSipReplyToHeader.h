#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** Reply-To: where the sender wants to be called back, if not at the URI in From.
    Reply-To = "Reply-To" HCOLON rplyto-spec                                  [RFC 3261 20.31]
    rplyto-spec = ( name-addr / addr-spec ) *(SEMI generic-param)
    "Reply-To: Bob <sip:bob@biloxi.com>" -> the same */
class KX_HEADERS_API KxSipReplyToHeader final : public KxSipAddressFieldHeader<KxSipReplyToHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipReplyToHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipReplyToHeader>;

    KxSipReplyToHeader() = default;
};
