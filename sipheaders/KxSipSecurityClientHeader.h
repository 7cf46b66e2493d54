#pragma once

#include "sipheaders/KxSipSecurityHeader.h"

/** Security-Client: the security mechanisms that the client supports, for its first proxy. One object per
    mechanism.
    security-client = "Security-Client" HCOLON sec-mechanism *(COMMA sec-mechanism)    [RFC 3329 2.2]
    "Security-Client: ipsec-3gpp; alg=hmac-sha-1-96;spi-c=93;port-c=5061, tls;q=0.2" -> two values, two lines out */
class KX_HEADERS_API KxSipSecurityClientHeader final : public KxSipSecurityHeader<KxSipSecurityClientHeader> {
public:
    using KxSipSecurityHeader::KxSipSecurityHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSecurityClientHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid Security-Client header";

private:
    friend class KxSipHeaderOf<KxSipSecurityClientHeader>;

    KxSipSecurityClientHeader() = default;
};
