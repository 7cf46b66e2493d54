#pragma once

#include "sipheaders/KxSipTextParameterHeader.h"

#include <string>

/** Identity: a signed token (PASSporT) that proves who calls, and where the certificate of the signer is. One object
    per token.
    Identity = ( "Identity" / "y" ) HCOLON signed-identity-digest SEMI ident-info *(SEMI ident-info-params) [RFC 8224 4]
    signed-identity-digest = 1*(base64-char / ".")
    ident-info = "info" EQUAL LAQUOT absoluteURI RAQUOT
    ident-info-params = "alg" EQUAL token / "ppt" EQUAL token / generic-param
    The characters of base64 and of base64url are read, and commas between values. The parameters may be in any order,
    and info absent or without brackets.
    "Identity: eyJh.eyJk.sig ;info=<https://h/c;1>;ppt="shaken"" -> the same */
class KX_HEADERS_API KxSipIdentityHeader final : public KxSipTextParameterHeader<KxSipIdentityHeader> {
public:
    /** As setPassport and setInfo. */
    KxSipIdentityHeader(KxSipText passport, KxSipText info) {
        setPassport(passport);
        setInfo(info);
    }

    /** The token: header, payload and signature in base64url, "a.b.c", or "..c" in the compact form. [RFC 8225 7] */
    const KxString& getPassport() const { return m_passport; }
    /** Throws KxSipParseError if the text is empty or has characters that a token has not. */
    void setPassport(KxSipText passport);
    /** Whether header and payload are left out, since the receiver makes them from the message. */
    [[nodiscard]] bool isCompactForm() const { return m_passport.view().starts_with(".."); }
    /** The header of the token as JSON text, such as {"alg":"ES256",...}. Empty in the compact form; none if the token
        has no three parts, or the part is not base64url. */
    std::optional<std::string> getJOSEHeader() const { return decoded(0); }
    /** The claims about the call, as JSON text; else as getJOSEHeader. */
    std::optional<std::string> getPayload() const { return decoded(1); }
    /** The signature in base64url, as received; KxSipBase64Url decodes it. Empty if the token has no three parts. In
        the full form, it signs the text before the second ".". */
    KxString getSignature() const { return KxString(part(2)); }

    /** The URI of the certificate, without brackets; nil when absent. */
    KxString getInfo() const;
    /** Throws KxSipParseError if the text is empty or can't be in "<>". */
    void setInfo(KxSipText uri);
    /** The signature algorithm; nil when absent, which means "ES256". */
    KxString getAlgorithm() const { return text("alg"); }
    void setAlgorithm(KxSipText algorithm) { setText("alg", algorithm); }
    /** The type of the token ("ppt"), such as "shaken" or "div"; nil when absent. [RFC 8225 8] */
    KxString getPassportType() const { return text("ppt"); }
    void setPassportType(KxSipText type) { setText("ppt", type); }
    [[nodiscard]] bool isPassportType(std::string_view type) const { return getPassportType().equalsNoCase(type); }

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipIdentityHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipIdentityHeader>;

    KxSipIdentityHeader() = default;
    static bool sReadParameter(KxSipLine& line, KxParameters& parameters);
    std::string_view part(std::size_t index) const;
    std::optional<std::string> decoded(std::size_t index) const;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxString m_passport;
};
