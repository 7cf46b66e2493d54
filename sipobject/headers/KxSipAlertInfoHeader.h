#pragma once

#include "sipobject/headers/KxSipURIHeader.h"

/** Alert-Info: the URI of an alternative ring tone or ring-back tone.
    Alert-Info = "Alert-Info" HCOLON alert-param *(COMMA alert-param)         [RFC 3261 20.4]
    alert-param = LAQUOT absoluteURI RAQUOT *( SEMI generic-param )
    A value that is not a URI in brackets is kept as text; in a constructor it throws "Invalid Alert-Info header".
    "Alert-Info: <http://h/a,b.wav> ;info=x" -> "Alert-Info: <http://h/a,b.wav>;info=x"; "Bellcore-dr3" -> the same */
class KX_SIP_API KxSipAlertInfoHeader final : public KxSipURIHeader<KxSipAlertInfoHeader> {
public:
    /** Holds a copy; nil stays nil. */
    explicit KxSipAlertInfoHeader(const KxHandle<KxURI>& uri) : KxSipURIHeader(uri) {}
    /** Reads the value, brackets included. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipAlertInfoHeader(const char* text) { parseText(text); }
    explicit KxSipAlertInfoHeader(KxSipText text) { parseText(text.checked()); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAlertInfoHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAlertInfo;
    static constexpr const char* kInvalid = "Invalid Alert-Info header";

private:
    friend class KxSipHeaderOf<KxSipAlertInfoHeader>;
    friend class KxSipTextKeepingHeader<KxSipAlertInfoHeader>;

    KxSipAlertInfoHeader() = default;
};
