#pragma once

#include "sipobject/headers/KxSipMediaTypeHeader.h"
#include "sipobject/headers/KxSipTextKeepingHeader.h"

class KxSipContentTypeHeader;

/** Accept: a media range that the sender accepts. One object per range; a comma-separated line becomes a chain.
    Accept = "Accept" HCOLON [ accept-range *(COMMA accept-range) ]           [RFC 3261 20.1]
    accept-range = media-range *(SEMI accept-param)
    A range without type or subtype, or in the classic grammar with a comma in quotes, is kept as text up to the next
    comma outside quotes; its type and subtype are then empty. The q value is one of the parameters.
    "Accept: application/sdp;level=1, text / *;q=0.5" -> two values, written as two lines */
class KX_SIP_API KxSipAcceptHeader final
    : public KxSipMediaTypeHeader<KxSipAcceptHeader,
                                  KxSipQValueHeader<KxSipAcceptHeader, KxSipTextKeepingHeader<KxSipAcceptHeader>>> {
public:
    KxSipAcceptHeader(const char* type, const char* subType) : KxSipMediaTypeHeader(type, subType) {}
    KxSipAcceptHeader(KxSipAnyText type, KxSipAnyText subType) : KxSipMediaTypeHeader(type, subType) {}

    /** Whether the range includes a media type. Letter case is ignored. As subtype of the range, "*" means any, and as its
        type too, if the subtype is "*". The parameters of the range before "q" must be those of the media type, which
        may have others. Their values are compared without letter case and without quotes, except that two quoted
        strings must be the same. A range that was kept as text includes nothing; one with "q=0" includes what is not
        acceptable. [RFC 3261 20.1, RFC 2616 14.1] */
    [[nodiscard]] bool matches(const KxSipContentTypeHeader& contentType) const;
    /** The same for a media type without parameters. */
    [[nodiscard]] bool matches(KxSipText type, KxSipText subType) const;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAcceptHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAccept;
    static constexpr const char* kHidesCommas = "\"";

private:
    friend class KxSipHeaderOf<KxSipAcceptHeader>;
    friend class KxSipTextKeepingHeader<KxSipAcceptHeader>;

    KxSipAcceptHeader() = default;
    bool includes(std::string_view type, std::string_view subType) const;
};
