#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/HeaderSupport.h"

constexpr const char* kNoLast = "KxException: Failed to parse Proxy-Authenticate SIP header";

TEST(AuthHeaderTest, Challenges) {
    constexpr const char* kRefused = "KxException: Challenge type not supported !";
    expectRows<KxSipAuthenticateHeader>(
        [](const auto& header) { return joined(header.getChallengeType(), header.getChallenge()->getRealm()); },
        {
            {"WWW-Authenticate: Digest realm=\"a,b\", nonce=\"n\", algorithm=MD5, stale=FALSE", "Digest|a,b",
             "WWW-Authenticate: Digest realm=\"a,b\",nonce=\"n\",algorithm=MD5,stale=FALSE"},
            {"proxy-authenticate:\t digest   realm=a", "Digest|a", "proxy-authenticate: Digest realm=\"a\""},
            {"Proxy-Authenticate: Digest stale=\"a b\",qop=c", "Digest|",
             "Proxy-Authenticate: Digest stale=a b,qop=\"c\"", "Proxy-Authenticate: Digest stale=ab,qop=\"c\""},
            {"WWW-Authenticate: Digest\trealm=\"a\"", "", kRefused}, // a tab is no blank
            {"WWW-Authenticate: Digest a=" + std::string(1024, 'x'), "", "KxException: Buffer overflew !!!"},
        });
    const auto header = KxMake<KxSipWWWAuthenticateHeader>(KxMake<KxSipDigestChallengeInfo>("r"));
    const auto copy = KxMake<KxSipWWWAuthenticateHeader>(*header);
    KxHandleCast<KxSipDigestChallengeInfo>(copy->getChallenge())->setProperty("realm", KxString("changed"));
    EXPECT_EQ(linesOf(*copy), "WWW-Authenticate: Digest realm=\"changed\"");
    EXPECT_EQ(linesOf(*KxMake<KxSipWWWAuthenticateHeader>(KxHandle<KxSipChallengeInfo>())), "WWW-Authenticate: ");
    EXPECT_EQ(linesOf(*header), "WWW-Authenticate: Digest realm=\"r\"");
}

TEST(AuthHeaderTest, Credentials) {
    const std::string sip = "username=\"u\",realm=\"r\",nonce=\"n\",response=\"x\",uri=\"sip:a\"";
    expectRows<KxSipAuthorizationHeader>(
        [](const auto& header) {
            return joined(header.getAuthenticationType(), header.getCredentials()->getUsername());
        },
        {
            {"Authorization: Digest username=\"u\", realm=\"r\", nonce=\"n\", uri=\"sip:a\", response=\"x\"",
             "Digest|u", "Authorization: Digest " + sip},
            {"Proxy-Authorization: DIGEST cnonce=c,nc=1,qop=auth,opaque=,algorithm=MD5," + sip, "Digest|u",
             "Proxy-Authorization: Digest " + sip + ",algorithm=MD5,opaque=\"\",qop=\"auth\",nc=1,cnonce=\"c\""},
            {"Authorization: Digest response=x", "Digest|",
             "Authorization: Digest username=\"\",realm=\"\",nonce=\"\",response=\"x\",uri=\"\"", kNoLast},
            {"Proxy-Authorization: Digest username=", "", kNoLast},
        });
    const KxHandle<KxSipDigestCredentialsInfo> info =
        KxSipDigestCredentialsInfo::sCreateFrom(KxByteArray::sCreate(sip.c_str()));
    const auto header = KxMake<KxSipAuthorizationHeader>(info);
    const auto named = KxMake<KxSipAuthorizationHeader>(KxString("X-Auth"), info);
    EXPECT_EQ(linesOf(*named), "X-Auth: Digest " + sip);
    const KxHandle<KxSipAuthorizationHeader> copy(new KxSipProxyAuthorizationHeader(info));
    const KxHandle<KxSipAuthorizationHeader> deep(static_cast<KxSipAuthorizationHeader*>(copy->clone()));
    info->setUsername("v");
    EXPECT_EQ(linesOf(*deep), "Proxy-Authorization: Digest " + sip);
    EXPECT_EQ(linesOf(*copy), "Proxy-Authorization: Digest username=\"v\"" + sip.substr(12));
    EXPECT_EQ(linesOf(*KxMake<KxSipAuthorizationHeader>(KxHandle<KxSipCredentialsInfo>())), "Authorization: ");
}

TEST(AuthHeaderTest, AuthenticationInfo) {
    expectRows<KxSipAuthenticationInfoHeader, &KxSipAuthenticationInfoHeader::getNextnonce,
               &KxSipAuthenticationInfoHeader::getRspauth, &KxSipAuthenticationInfoHeader::getQop,
               &KxSipAuthenticationInfoHeader::getNc, &KxSipAuthenticationInfoHeader::getCnonce>({
        {"Authentication-Info:\t cnonce=\"c,d\", nc=1, Qop=\"auth\", NEXTNONCE=n", "n||auth|1|c,d",
         "Authentication-Info: nextnonce=\"n\",qop=auth,nc=1,cnonce=\"c,d\""},
        {"Authentication-Info: nc=1,rspauth=", "|||1|", "Authentication-Info: nextnonce=\"\""},
    });
    EXPECT_EQ(linesOf(*KxMake<KxSipAuthenticationInfoHeader>("qop=\"a b\",X=\"y\"")),
              "Authentication-Info: nextnonce=\"\",qop=a b,nc=,cnonce=\"\"");
    EXPECT_EQ(linesOf(*KxMake<KxSipAuthenticationInfoHeader>(nullptr)), "Authentication-Info: nextnonce=\"\"");
}

TEST(AuthHeaderTest, MessagesGiveTheFirst) {
    const auto request = [](const std::string& lines) {
        return KxHandleCast<KxSipRequest>(
            readMessage("OPTIONS sip:a SIP/2.0\r\n" + requiredHeaders("OPTIONS") + lines + "\r\n"));
    };
    const std::string own = "Authorization: Digest response=1\r\nAuthorization: Digest response=2\r\n";
    const std::string proxys = "Proxy-Authorization: Digest response=3\r\n";
    const auto response = [](const KxHandle<KxSipAuthorizationHeader>& header) {
        return KxHandleCast<KxSipDigestCredentialsInfo>(header->getCredentials())->getProperty("response");
    };
    EXPECT_EQ(response(request(proxys + own)->getAuthorizationHeader()), "1");
    EXPECT_EQ(response(request(proxys)->getAuthorizationHeader()), "3");
    const auto refused = request("Authorization: Basic x\r\n");
    EXPECT_TRUE(refused->getAuthorizationHeader().isNil());
    EXPECT_EQ(refused->getStatus(), KX_STATUS_INCOMPLETE);

    const auto answer = KxMake<KxSipResponse>(401, request(""), nullptr, nullptr, 0U);
    EXPECT_TRUE(answer->getAuthenticateHeader().isNil());
    const auto challenge = KxMake<KxSipDigestChallengeInfo>("r");
    answer->addHeader(KxMake<KxSipProxyAuthenticateHeader>(challenge), false);
    EXPECT_EQ(className(*answer->getAuthenticateHeader()), "KxSipProxyAuthenticateHeader");
    answer->addHeader(KxMake<KxSipWWWAuthenticateHeader>(challenge), false);
    EXPECT_EQ(className(*answer->getAuthenticateHeader()), "KxSipWWWAuthenticateHeader");
}
