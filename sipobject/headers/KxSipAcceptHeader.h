#pragma once

#include "sipobject/headers/KxSipMediaRange.h"
#include "sipobject/headers/KxSipMediaTypeHeader.h"
#include "sipobject/headers/KxSipTextKeepingHeader.h"

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

    /** Whether the range includes a media type, as KxSipMediaRange tells it. A range that was kept as text includes
        nothing; one with "q=0" includes what is not acceptable. [RFC 3261 20.1] */
    [[nodiscard]] bool matches(const KxSipContentTypeHeader& contentType) const {
        return KxSipMediaRange(m_type, m_subType, m_parameters).includes(contentType);
    }
    /** The same for a media type without parameters. */
    [[nodiscard]] bool matches(KxSipText type, KxSipText subType) const {
        return KxSipMediaRange(m_type, m_subType, m_parameters).includes(type.view(), subType.view());
    }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAcceptHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAccept;
    static constexpr const char* kHidesCommas = "\"";

private:
    friend class KxSipHeaderOf<KxSipAcceptHeader>;
    friend class KxSipTextKeepingHeader<KxSipAcceptHeader>;

    KxSipAcceptHeader() = default;
};
