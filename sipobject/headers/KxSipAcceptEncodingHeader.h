#pragma once

#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** Accept-Encoding: a content coding that the sender accepts, or "*" for any other. One object per coding.
    Accept-Encoding = "Accept-Encoding" HCOLON [ encoding *(COMMA encoding) ]   [RFC 3261 20.2]
    encoding = codings *(SEMI accept-param)
    An empty coding throws "Invalid Accept-Encoding header", so an empty list is refused.
    "Accept-Encoding: gzip;q=1.0, identity; q=0.5" -> two values, "gzip;q=1.0" and "identity;q=0.5" */
class KX_SIP_API KxSipAcceptEncodingHeader final
    : public KxSipTokenHeader<KxSipAcceptEncodingHeader, KxSipQValueHeader<KxSipAcceptEncodingHeader>> {
public:
    explicit KxSipAcceptEncodingHeader(const char* coding) : KxSipTokenHeader(coding) {}
    explicit KxSipAcceptEncodingHeader(KxSipText coding) : KxSipTokenHeader(coding) {}

    const KxString& getContentEncoding() const { return m_value; }
    void setContentEncoding(KxSipText coding) { setTokenText(coding); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAcceptEncodingHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAcceptEncoding;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Invalid Accept-Encoding header";

private:
    friend class KxSipHeaderOf<KxSipAcceptEncodingHeader>;

    KxSipAcceptEncodingHeader() = default;
};
