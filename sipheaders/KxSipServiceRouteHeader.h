#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** Service-Route: a hop through which a registered user agent sends its requests to the services of its home network.
    One object per hop, in the order of the Route headers that they become.
    Service-Route = "Service-Route" HCOLON sr-value *(COMMA sr-value)         [RFC 3608 5]
    sr-value = name-addr *(SEMI rr-param)
    "Service-Route: <sip:p;lr>,<sip:q;lr>" -> two values, "<sip:p;lr>" and "<sip:q;lr>" */
class KX_HEADERS_API KxSipServiceRouteHeader final : public KxSipAddressFieldHeader<KxSipServiceRouteHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipServiceRouteHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipServiceRouteHeader>;

    KxSipServiceRouteHeader() = default;
};
