#pragma once

#include "sipobject/headers/KxSipURIHeader.h"

/** Error-Info: the URI of more information about the error in the response.
    Error-Info = "Error-Info" HCOLON error-uri *(COMMA error-uri)             [RFC 3261 20.18]
    error-uri = LAQUOT absoluteURI RAQUOT *( SEMI generic-param )
    A value that is not a URI in brackets is kept as text; in a constructor it throws "Invalid Error-Info header".
    "Error-Info: <sip:not-in-service@h;x=1>;y" -> the same */
class KX_SIP_API KxSipErrorInfoHeader final : public KxSipURIHeader<KxSipErrorInfoHeader> {
public:
    /** Holds a copy; nil stays nil. */
    explicit KxSipErrorInfoHeader(const KxHandle<KxURI>& uri) : KxSipURIHeader(uri) {}
    /** Reads the value, brackets included. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipErrorInfoHeader(const char* text) { parseText(text); }
    explicit KxSipErrorInfoHeader(KxSipText text) { parseText(text.checked()); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipErrorInfoHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kErrorInfo;
    static constexpr const char* kInvalid = "Invalid Error-Info header";

private:
    friend class KxSipHeaderOf<KxSipErrorInfoHeader>;
    friend class KxSipTextKeepingHeader<KxSipErrorInfoHeader>;

    KxSipErrorInfoHeader() = default;
};
