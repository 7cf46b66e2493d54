#pragma once

// The digest of the example of RFC 2617, for the comparison and the guard. Empty if the library has no digests.

#if __has_include("sipobject/auth/KxSipDigestCredentialsInfo.h")
#define KX_BENCH_HAS_DIGEST 1

#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxHexEncoding.h"

#include <string_view>

/** Credentials that are complete except for the response, which each call computes again: five MD5 blocks, qop=auth.
    [RFC 2617 3.5] */
class DigestExample {
public:
    DigestExample() {
        const KxHandle<KxSipDigestChallengeInfo> challenge = KxMake<KxSipDigestChallengeInfo>("testrealm@host.com");
        challenge->setProperty("nonce", "dcd98b7102dd2f0e8b11d0f600bfb0c093");
        challenge->setProperty("algorithm", "MD5");
        challenge->setQopOptions("auth");
        m_credentials = KxMake<KxSipDigestCredentialsInfo>(challenge, "Mufasa", "Circle Of Life");
        m_credentials->setMethod("GET");
        m_credentials->setQop("auth", "0a4f113b", 1);
        KxByteArrayInputStream uri{std::string_view("uri=\"/dir/index.html\"")}; // setDigestURI would need a whole URI
        m_credentials->parse(uri);
    }

    /** Writes the response as 32 digits and a NUL. */
    void respond(char out[33]) const { *KxHexEncoding::toHex(m_credentials->getRequestDigest()->view(), out) = '\0'; }

private:
    KxHandle<KxSipDigestCredentialsInfo> m_credentials;
};

#endif
