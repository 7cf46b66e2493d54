#pragma once

#include "sipobject/headers/KxSipAuthorizationHeader.h"

/** Proxy-Authorization: the credentials of a user agent for a proxy.
    Proxy-Authorization = "Proxy-Authorization" HCOLON ("Digest" LWS digest-response)   [RFC 3261 20.28]
    Read and written as Authorization is. */
class KX_SIP_API KxSipProxyAuthorizationHeader final
    : public KxSipHeaderOf<KxSipProxyAuthorizationHeader, KxSipAuthorizationHeader> {
public:
    /** Shares the credentials. */
    explicit KxSipProxyAuthorizationHeader(const KxHandle<KxSipCredentialsInfo>& credentials) {
        setCredentials(credentials);
    }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipProxyAuthorizationHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kProxyAuthorization;

private:
    friend class KxSipHeaderOf<KxSipProxyAuthorizationHeader, KxSipAuthorizationHeader>;

    KxSipProxyAuthorizationHeader() = default;
};
