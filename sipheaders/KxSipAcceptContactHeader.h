#pragma once

#include "sipheaders/KxSipContactPreferenceHeader.h"

/** Accept-Contact: the features of the contacts that the request should reach. One object per set of features.
    Accept-Contact = ( "Accept-Contact" / "a" ) HCOLON ac-value *(COMMA ac-value)   [RFC 3841 10]
    ac-value = "*" *(SEMI ( feature-param / "require" / "explicit" / generic-param ))
    "a: *;audio;methods=\"INVITE,BYE\";require, *;video" -> two values */
class KX_HEADERS_API KxSipAcceptContactHeader final : public KxSipContactPreferenceHeader<KxSipAcceptContactHeader> {
public:
    KxSipAcceptContactHeader() = default;

    /** Whether a contact that does not fit must not be tried. [RFC 3841 7.2.4] */
    [[nodiscard]] bool isRequired() const { return isParameterPresent("require"); }
    void setRequired(bool isRequired) { setFlag("require", isRequired); }
    /** Whether only a contact that names all the features fits fully. [RFC 3841 7.2.4] */
    [[nodiscard]] bool isExplicit() const { return isParameterPresent("explicit"); }
    void setExplicit(bool isExplicit) { setFlag("explicit", isExplicit); }

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipAcceptContactHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kInvalid = "Invalid Accept-Contact header";

private:
    friend class KxSipHeaderOf<KxSipAcceptContactHeader>;
};
