#pragma once

#include "sipobject/headers/KxSipMediaTypeHeader.h"

/** Accept: one media range an object; a comma-separated line is a chain.
    Accept = "Accept" HCOLON [ accept-range *(COMMA accept-range) ]           [RFC 3261 20.1]
    accept-range = media-range *(SEMI accept-param)
    A comma ends the value even inside quotes; a range without type or subtype throws "Invalid Accept header". The q
    value stands among the parameters.
    "Accept: application/sdp;level=1, text / *;q=0.5" -> two values, two lines out */
class KX_SIP_API KxSipAcceptHeader final
    : public KxSipMediaTypeHeader<KxSipAcceptHeader, KxSipPreferenceHeader<KxSipAcceptHeader>> {
public:
    KxSipAcceptHeader(const char* type, const char* subType) : KxSipMediaTypeHeader(type, subType) {}

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAcceptHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAccept;

private:
    friend class KxSipHeaderOf<KxSipAcceptHeader>;

    KxSipAcceptHeader() = default;
};
