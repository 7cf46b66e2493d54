#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** P-Called-Party-ID: the Request-URI with which the request came to the proxy of the callee, which has replaced it.
    P-Called-Party-ID = "P-Called-Party-ID" HCOLON called-pty-id-spec         [RFC 7315 5.2]
    called-pty-id-spec = name-addr *(SEMI cpid-param)
    A URI may be without brackets.      "P-Called-Party-ID: sip:bob@h;x" -> the same */
class KX_HEADERS_API KxSipPCalledPartyIDHeader final : public KxSipAddressFieldHeader<KxSipPCalledPartyIDHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPCalledPartyIDHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipPCalledPartyIDHeader>;

    KxSipPCalledPartyIDHeader() = default;
};
