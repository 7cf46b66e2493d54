#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** SIP-ETag: the name of the state that a PUBLISH made, in its 2xx response.
    SIP-ETag = "SIP-ETag" HCOLON entity-tag; entity-tag = token               [RFC 3903 11.3.1, 12]
    "SIP-ETag: dx200xyz" -> the same */
class KX_HEADERS_API KxSipSIPETagHeader final : public KxSipPlainTokenHeader<KxSipSIPETagHeader> {
public:
    /** Throws KxSipParseError if the tag is no token. */
    explicit KxSipSIPETagHeader(KxSipText entityTag) : KxSipPlainTokenHeader(entityTag) {}

    /** Compares byte by byte. */
    const KxString& getEntityTag() const { return m_value; }
    void setEntityTag(KxSipText entityTag) { setTokenText(entityTag); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSIPETagHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid SIP-ETag header";

private:
    friend class KxSipHeaderOf<KxSipSIPETagHeader>;

    KxSipSIPETagHeader() = default;
};
