#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** SIP-If-Match: the state that the PUBLISH refreshes, changes or removes, by the SIP-ETag of an earlier response.
    SIP-If-Match = "SIP-If-Match" HCOLON entity-tag; entity-tag = token       [RFC 3903 11.3.2, 12]
    "SIP-If-Match: dx200xyz" -> the same */
class KX_HEADERS_API KxSipSIPIfMatchHeader final : public KxSipPlainTokenHeader<KxSipSIPIfMatchHeader> {
public:
    /** Throws KxSipParseError if the tag is no token. */
    explicit KxSipSIPIfMatchHeader(KxSipText entityTag) : KxSipPlainTokenHeader(entityTag) {}

    /** Compares byte by byte. */
    const KxString& getEntityTag() const { return m_value; }
    void setEntityTag(KxSipText entityTag) { setTokenText(entityTag); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSIPIfMatchHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid SIP-If-Match header";

private:
    friend class KxSipHeaderOf<KxSipSIPIfMatchHeader>;

    KxSipSIPIfMatchHeader() = default;
};
