#pragma once

#include "sipheaders/KxSipSecurityHeader.h"

/** Security-Server: the security mechanisms that the first proxy supports, in its answer to Security-Client. One object
    per mechanism.
    security-server = "Security-Server" HCOLON sec-mechanism *(COMMA sec-mechanism)    [RFC 3329 2.2]
    "Security-Server: tls;q=0.2" -> the same */
class KX_HEADERS_API KxSipSecurityServerHeader final : public KxSipSecurityHeader<KxSipSecurityServerHeader> {
public:
    using KxSipSecurityHeader::KxSipSecurityHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSecurityServerHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid Security-Server header";

private:
    friend class KxSipHeaderOf<KxSipSecurityServerHeader>;

    KxSipSecurityServerHeader() = default;
};
