#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** Path: a proxy between the user agent that registers and its registrar, through which requests come back. One object
    per proxy; the first one is the nearest to the registrar.
    Path = "Path" HCOLON path-value *(COMMA path-value)                       [RFC 3327 4]
    path-value = name-addr *(SEMI rr-param)
    "Path: <sip:p1;lr;ob> , <sip:p2;lr>" -> two values, "<sip:p1;lr;ob>" and "<sip:p2;lr>" */
class KX_HEADERS_API KxSipPathHeader final : public KxSipAddressFieldHeader<KxSipPathHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPathHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipPathHeader>;

    KxSipPathHeader() = default;
};
