#pragma once

#include "sipobject/headers/KxSipAuthenticateHeader.h"
#include "sipobject/headers/KxSipHeaderOf.h"

/** WWW-Authenticate: the challenge of a user agent server or registrar, in a 401 response.
    WWW-Authenticate = "WWW-Authenticate" HCOLON challenge                    [RFC 3261 20.44]
    See KxSipAuthenticateHeader for how it is read and written. */
class KX_SIP_API KxSipWWWAuthenticateHeader final
    : public KxSipHeaderOf<KxSipWWWAuthenticateHeader, KxSipAuthenticateHeader> {
public:
    /** Shares the challenge. */
    explicit KxSipWWWAuthenticateHeader(const KxHandle<KxSipChallengeInfo>& challenge) { setChallenge(challenge); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipWWWAuthenticateHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kWWWAuthenticate;

private:
    friend class KxSipHeaderOf<KxSipWWWAuthenticateHeader, KxSipAuthenticateHeader>;

    KxSipWWWAuthenticateHeader() = default;
};
