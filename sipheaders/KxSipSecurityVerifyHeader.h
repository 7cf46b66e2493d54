#pragma once

#include "sipheaders/KxSipSecurityHeader.h"

/** Security-Verify: the values of Security-Server as the client has received them, from which the proxy sees whether
    they were changed on the way. One object per mechanism.
    security-verify = "Security-Verify" HCOLON sec-mechanism *(COMMA sec-mechanism)    [RFC 3329 2.2]
    "Security-Verify: tls;q=0.2" -> the same */
class KX_HEADERS_API KxSipSecurityVerifyHeader final : public KxSipSecurityHeader<KxSipSecurityVerifyHeader> {
public:
    using KxSipSecurityHeader::KxSipSecurityHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSecurityVerifyHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid Security-Verify header";

private:
    friend class KxSipHeaderOf<KxSipSecurityVerifyHeader>;

    KxSipSecurityVerifyHeader() = default;
};
