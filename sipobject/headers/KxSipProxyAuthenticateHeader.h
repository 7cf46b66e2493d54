#pragma once

#include "sipobject/headers/KxSipAuthenticateHeader.h"
#include "sipobject/headers/KxSipHeaderOf.h"

/** Proxy-Authenticate: the challenge of a proxy, in a 407 response.
    Proxy-Authenticate = "Proxy-Authenticate" HCOLON challenge                [RFC 3261 20.27]
    See KxSipAuthenticateHeader for how it is read and written. */
class KX_SIP_API KxSipProxyAuthenticateHeader final
    : public KxSipHeaderOf<KxSipProxyAuthenticateHeader, KxSipAuthenticateHeader> {
public:
    /** Shares the challenge. */
    explicit KxSipProxyAuthenticateHeader(const KxHandle<KxSipChallengeInfo>& challenge) { setChallenge(challenge); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipProxyAuthenticateHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kProxyAuthenticate;

private:
    friend class KxSipHeaderOf<KxSipProxyAuthenticateHeader, KxSipAuthenticateHeader>;

    KxSipProxyAuthenticateHeader() = default;
};
