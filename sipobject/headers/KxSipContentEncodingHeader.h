#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Content-Encoding: a content coding applied to the body. One object per coding.
    Content-Encoding = ( "Content-Encoding" / "e" ) HCOLON content-coding *(COMMA content-coding)   [RFC 3261 20.12]
    An empty coding is refused.      "e: gzip" -> "e: gzip" */
class KX_SIP_API KxSipContentEncodingHeader final : public KxSipTokenHeader<KxSipContentEncodingHeader> {
public:
    explicit KxSipContentEncodingHeader(const char* coding) : KxSipTokenHeader(coding) {}
    explicit KxSipContentEncodingHeader(KxSipText coding) : KxSipTokenHeader(coding) {}

    const KxString& getContentEncoding() const { return m_value; }
    void setContentEncoding(KxSipText coding) { setTokenText(coding); }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipContentEncodingHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kContentEncoding;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Invalid Content-Encoding header";

private:
    friend class KxSipHeaderOf<KxSipContentEncodingHeader>;

    KxSipContentEncodingHeader() = default;
};
