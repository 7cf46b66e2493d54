#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** Record-Route: a proxy that stays in the path of the dialog. One object per proxy.
    Record-Route = "Record-Route" HCOLON name-addr *(SEMI rr-param) *(COMMA ...)   [RFC 3261 20.30]
    Any URI but a SIP URL throws "Invalid SIP URL in Name-Address for Record-Route". A value that can't be read throws
    "Exception when parsing Name-Address in KxSipRecordRouteHeader: " and the cause. In the classic grammar, header
    parameters after the ">" are not read.
    "Record-Route: <sip:p;lr>" -> the same */
class KX_SIP_API KxSipRecordRouteHeader final : public KxSipParameterAddressHeader<KxSipRecordRouteHeader> {
public:
    /** Holds a copy; nil gives an empty name-address. */
    explicit KxSipRecordRouteHeader(const KxHandle<KxSipNameAddress>& address);
    /** Reads the value. */
    explicit KxSipRecordRouteHeader(const char* text) { parseText(text); }
    explicit KxSipRecordRouteHeader(KxSipText text) { parseText(text.checked()); }

    /** Nil if the URI is not a SIP URL. */
    KxHandle<KxSipURL> getURL() const { return getSipURL(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRecordRouteHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kRecordRoute;

private:
    friend class KxSipHeaderOf<KxSipRecordRouteHeader>;
    using Base = KxSipParameterAddressHeader<KxSipRecordRouteHeader>;

    KxSipRecordRouteHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
};
