#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** Route: a hop that the request must visit. One object per hop.
    Route = "Route" HCOLON name-addr *(SEMI rr-param) *(COMMA ...)            [RFC 3261 20.34]
    In the classic grammar, header parameters after the ">" are not read. A value that can't be read throws
    "Invalid Name-Address in KxSipRouteHeader".
    "Route: <sip:p;lr>, <sip:q;lr>;x" -> "Route: <sip:p;lr>", "Route: <sip:q;lr>" (RFC grammar: "<sip:q;lr>;x") */
class KX_SIP_API KxSipRouteHeader final : public KxSipParameterAddressHeader<KxSipRouteHeader> {
public:
    /** Holds a copy; nil gives an empty name-address. */
    explicit KxSipRouteHeader(const KxHandle<KxSipNameAddress>& address);
    /** Reads the value. */
    explicit KxSipRouteHeader(const char* text) { parseText(text); }
    explicit KxSipRouteHeader(KxSipText text) { parseText(text.checked()); }

    /** Nil if the URI is not a SIP URL. */
    KxHandle<KxSipURL> getURL() const { return getSipURL(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRouteHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kRoute;

private:
    friend class KxSipHeaderOf<KxSipRouteHeader>;
    using Base = KxSipParameterAddressHeader<KxSipRouteHeader>;

    KxSipRouteHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
};
