#pragma once

#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** Accept-Language: a language that the sender understands, or "*" for any other. One object per language.
    Accept-Language = "Accept-Language" HCOLON [ language *(COMMA language) ]   [RFC 3261 20.3]
    language = language-range *(SEMI accept-param)
    An empty range throws "Invalid Accept-Language header", so an empty list is refused.
    "Accept-Language: da, en-gb ;q=0.8" -> two values, "da" and "en-gb;q=0.8" */
class KX_SIP_API KxSipAcceptLanguageHeader final
    : public KxSipTokenHeader<KxSipAcceptLanguageHeader, KxSipQValueHeader<KxSipAcceptLanguageHeader>> {
public:
    explicit KxSipAcceptLanguageHeader(const char* language) : KxSipTokenHeader(language) {}
    explicit KxSipAcceptLanguageHeader(KxSipText language) : KxSipTokenHeader(language) {}

    const KxString& getLanguage() const { return m_value; }
    void setLanguage(KxSipText language) { setTokenText(language); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAcceptLanguageHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAcceptLanguage;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Invalid Accept-Language header";

private:
    friend class KxSipHeaderOf<KxSipAcceptLanguageHeader>;

    KxSipAcceptLanguageHeader() = default;
};
