#pragma once

#include "sipobject/headers/KxSipMediaTypeHeader.h"

/** Content-Type: the media type of the body.
    Content-Type = ( "Content-Type" / "c" ) HCOLON m-type SLASH m-subtype *(SEMI m-parameter)   [RFC 3261 20.15]
    In the classic grammar, a comma ends the value even inside quotes. A value without type or subtype throws "Invalid
    Accept header", the same error text as for Accept.
    "c: text / plain ;charset=utf-8" -> "c: text/plain;charset=utf-8" */
class KX_SIP_API KxSipContentTypeHeader : public KxSipMediaTypeHeader<KxSipContentTypeHeader> {
public:
    KxSipContentTypeHeader(const char* type, const char* subType) : KxSipMediaTypeHeader(type, subType) {}
    KxSipContentTypeHeader(KxSipAnyText type, KxSipAnyText subType) : KxSipMediaTypeHeader(type, subType) {}
    /** "type/subtype", split as setMediaType does. */
    explicit KxSipContentTypeHeader(const char* mediaType) { setMediaType(mediaType); }
    explicit KxSipContentTypeHeader(KxSipText mediaType) { setMediaType(mediaType.needed("media type")); }

    using KxSipMediaTypeHeader::setMediaType;

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipContentTypeHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kContentType;

protected:
    friend class KxSipHeaderOf<KxSipContentTypeHeader>;
    friend class KxSipBody;

    KxSipContentTypeHeader() = default;

    /** Splits at the first "/" without trimming. Without a "/" the whole text is the type; null empties both. */
    void setMediaType(KxSipText mediaType);
};
