#pragma once

#include "sipheaders/KxSipContactPreferenceHeader.h"

/** Reject-Contact: the features of the contacts that the request must not reach. One object per set of features.
    Reject-Contact = ( "Reject-Contact" / "j" ) HCOLON rc-value *(COMMA rc-value)   [RFC 3841 10]
    rc-value = "*" *(SEMI ( feature-param / generic-param ))
    "j: *;actor=\"msg-taker\";video" -> the same */
class KX_HEADERS_API KxSipRejectContactHeader final : public KxSipContactPreferenceHeader<KxSipRejectContactHeader> {
public:
    KxSipRejectContactHeader() = default;

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipRejectContactHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kInvalid = "Invalid Reject-Contact header";

private:
    friend class KxSipHeaderOf<KxSipRejectContactHeader>;
};
