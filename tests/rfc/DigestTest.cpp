#include "sipobject/KxSipCSeq.h"
#include "sipobject/KxSipTag.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/auth/KxSipOtherChallengeInfo.h"
#include "sipobject/auth/KxSipOtherCredentialsInfo.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/HeaderSupport.h"

#include <algorithm>
#include <cstdio>
#include <random>

namespace {

constexpr const char* kRefused = "KxException: Failed to parse Proxy-Authenticate SIP header";

using Challenge = KxHandle<KxSipDigestChallengeInfo>;
using Credentials = KxHandle<KxSipDigestCredentialsInfo>;

Challenge challengeOf(const std::string& properties) {
    return KxSipDigestChallengeInfo::sCreateFrom(KxByteArray::sCreate(properties.c_str()));
}

/** The output of a shell command, without the line end; empty if it fails. */
std::string shell(const std::string& command) {
    std::string output;
    FILE* const pipe = popen((command + " 2>/dev/null").c_str(), "r");
    for (int c = 0; pipe != nullptr && (c = std::getc(pipe)) != EOF;) {
        output += static_cast<char>(c);
    }
    return pipe != nullptr && pclose(pipe) == 0 ? output.substr(0, output.find('\n')) : "";
}

struct Row {
    const char* algorithm; ///< As the challenge names it; null for none.
    const char* qop;
    const char* body; ///< Null for none.
};

/** Answers the challenge as the row says, and expects that a server finds the response right. */
void expectResponse(const std::string& challenge, const char* password, const char* cnonce, const Row& row,
                    const std::string& response) {
    const Balance balance;
    const auto made = KxMake<KxSipDigestCredentialsInfo>(challengeOf(challenge), "Mufasa", password);
    made->setMethod("GET");
    KxByteArrayInputStream uri{std::string_view("uri=/dir/index.html")};
    made->parse(uri);
    made->setQop(row.qop, cnonce, 1);
    if (row.body != nullptr) {
        made->setEntityBody(row.body);
    }
    const std::string text = written(*made);
    EXPECT_NE(text.find(",response=\"" + response + "\","), std::string::npos) << text << "\nnot " << response;
    EXPECT_EQ(text.find("algorithm") != std::string::npos, row.algorithm != nullptr) << text;
    const Credentials received = KxSipDigestCredentialsInfo::sCreateFrom(KxByteArray::sCreate(text.c_str()));
    received->setMethod("GET");
    received->setEntityBody(row.body);
    EXPECT_EQ(written(*received), text);
    EXPECT_TRUE(received->validate("Mufasa", password, received->getRealm())) << text;
    EXPECT_FALSE(received->validate("Mufasa", "other", received->getRealm())) << text;
}

} // namespace

TEST(RFCDigestTest, ExamplesOfTheRFCs) {
    const std::string of7616 = "realm=\"http-auth@example.org\", qop=\"auth, auth-int\", "
                               "nonce=\"7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v\", "
                               "opaque=\"FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS\", algorithm=";
    const std::string of2617 =
        "realm=\"testrealm@host.com\", qop=\"auth,auth-int\", "
        "nonce=\"dcd98b7102dd2f0e8b11d0f600bfb0c093\", opaque=\"5ccc069c403ebaf9f0171e9517f40e41\"";
    constexpr const char* kCnonce = "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ";
    expectResponse(of7616 + "MD5", "Circle of Life", kCnonce, {"MD5", "auth", nullptr},
                   "8ca523f5e9506fed4657c9700eebdbec");
    expectResponse(of7616 + "SHA-256", "Circle of Life", kCnonce, {"SHA-256", "auth", nullptr},
                   "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1");
    expectResponse(of2617, "Circle Of Life", "0a4f113b", {nullptr, "auth", nullptr},
                   "6629fae49393a05397450978507c4ef1");
}

TEST(RFCDigestTest, ResponsesAsOpensslComputesThem) {
    if (shell("openssl version").empty()) {
        GTEST_SKIP() << "openssl is not installed";
    }
    const std::tuple<const char*, const char*, bool> algorithms[] = {
        // name, digest of openssl, whether of a session
        {"Md5-Sess", "md5", true},
        {"sha-256", "sha256", false},
        {"SHA-256-sess", "sha256", true},
        {"SHA-512-256", "sha512-256", false},
        {"SHA-512-256-SESS", "sha512-256", true},
    };
    std::mt19937 random(7616); // the same values in each run
    const auto word = [&random] {
        std::string letters(8 + random() % 40, 'a');
        std::generate(letters.begin(), letters.end(), [&random] { return "aZ09+/-_~"[random() % 9]; });
        return letters;
    };
    for (const auto& [algorithm, digest, isSession] : algorithms) {
        const auto hash = [&name = digest](const std::string& text) {
            return shell("printf %s '" + text + "' | openssl dgst -r -" + name).substr(0, name[0] == 'm' ? 32 : 64);
        };
        for (const Row& row : {Row{algorithm, "", nullptr}, Row{algorithm, "auth", "body"},
                               Row{algorithm, "auth-int", "a body"}, Row{algorithm, "auth-int", nullptr}}) {
            const bool hasQop = *row.qop != '\0';
            const std::string realm = word(), password = word(), nonce = word(), cnonce = word();
            const std::string user = hash("Mufasa:" + realm + ':' + password);
            const std::string a1 = isSession ? hash(user + ':' + nonce + ':' + (hasQop ? cnonce : "")) : user;
            const std::string body = row.body == nullptr ? "" : row.body;
            const std::string integrity = row.qop == std::string_view("auth-int") ? ":" + hash(body) : "";
            const std::string a2 = hash("GET:/dir/index.html" + integrity);
            const std::string count = hasQop ? ":00000001:" + cnonce + ':' + row.qop : "";
            expectResponse("realm=" + realm + ",nonce=" + nonce + ",qop=\"auth, AUTH-INT\",algorithm=" + algorithm,
                           password.c_str(), cnonce.c_str(), row, hash(a1 + ':' + nonce + count + ':' + a2));
        }
    }
}

TEST(RFCDigestTest, Challenges) {
    expectRows<KxSipAuthenticateHeader>(
        [](const auto& header) { return joined(header.getChallengeType(), header.getChallenge()->getRealm()); },
        {
            {R"(WWW-Authenticate: Digest realm="a, \"b\" \\c\d",Nonce="n",opaque="")", R"(Digest|a, "b" \cd)",
             R"(WWW-Authenticate: Digest realm="a, \"b\" \\cd",Nonce="n",opaque="")"},
            {"WWW-Authenticate:  digest\trealm = a b ,\t, nonce=YWJj==, stale=FALSE , qop=\"auth\", algorithm=SHA-256,",
             "Digest|a b",
             R"(WWW-Authenticate: Digest realm="a b",nonce="YWJj==",stale=FALSE,qop="auth",algorithm=SHA-256)"},
            {R"(Proxy-Authenticate: Digest uri="sip:a",stale="a b",userhash=true,charset=UTF-8,x="1",algorithm="")",
             "Digest|"},
            {"WWW-Authenticate: Digest realm=\"" + std::string(2000, 'x') + '"', "Digest|" + std::string(2000, 'x')},
            {R"(WWW-Authenticate: Basic realm="a b\"",  charset="UTF-8")", "Basic|a b\""},
            {"Proxy-Authenticate:  NTLM", "NTLM|", "Proxy-Authenticate: NTLM"},
            {"WWW-Authenticate: Negotiate YWJj==", "Negotiate|"},
            {"WWW-Authenticate: realm=\"a\"", "", "KxException: Challenge type not supported !"},
            {"WWW-Authenticate: Digest", "", kRefused},
            {"WWW-Authenticate: Digest realm=\"a\" b", "", kRefused},
            {"WWW-Authenticate: Digest realm=a\"b\"", "", kRefused},
            {"WWW-Authenticate: Digest realm=\"a", "", kRefused},
            {"WWW-Authenticate: Digest realm=\"a\\", "", kRefused},
            {"WWW-Authenticate: Digest realm=\"a\", nonce", "", kRefused},
            {"WWW-Authenticate: Digest realm=\"a\", Basic realm=\"b\"", "", kRefused},
            {"WWW-Authenticate: Digest =\"a\"", "", kRefused},
        });
    for (const std::string_view bad : {"a=\"\r\nX: y\"", "a=b\r\nX: y", "a=\"\\\n\""}) {
        const auto bytes = KxByteArray::sCreate(bad.size(), bad.data());
        EXPECT_EQ(outcomeOf([&] { KxSipChallengeInfo::constructFrom("Digest", bytes); }), kRefused);
        EXPECT_NE(outcomeOf([&] { KxSipChallengeInfo::constructFrom("Basic", bytes); }), "");
        const Challenge challenge = challengeOf("realm=r");
        const std::string more = "realm=other," + std::string(bad);
        KxByteArrayInputStream in{std::string_view(more)};
        EXPECT_EQ(outcomeOf([&] { challenge->parse(in); }), kRefused);
        EXPECT_EQ(written(*challenge), "realm=\"r\"");
    }
}

TEST(RFCDigestTest, Credentials) {
    expectRows<KxSipAuthorizationHeader>(
        [](const auto& header) {
            const bool isValid = header.getCredentials()->validate("u", "p", "r");
            return joined(header.getAuthenticationType(), isValid);
        },
        {
            {"Authorization: Digest username=\"u\",realm=\"r\",nonce=\"\",response=\"\",uri=\"sip:r\",opaque=\"\"",
             "Digest|0"},
            {R"(Authorization: Digest username="u",realm="r",nonce="n",uri="sip:r",integrity-protected="no",response="x",)"
             R"(cnonce="\"",username*=UTF-8''u,nc=00000001,qop="auth",algorithm="MD5")",
             "Digest|0",
             R"(Authorization: Digest username="u",realm="r",nonce="n",response="x",uri="sip:r",algorithm=MD5,qop=auth,)"
             R"(nc=00000001,cnonce="\"",integrity-protected="no",username*=UTF-8''u)"},
            {"Proxy-Authorization: Basic dTpw==", "Basic|0"},
            {"Proxy-Authorization: Bearer", "Bearer|0"},
            {"Authorization: Digest username=\"u\" realm=\"r\"", "", kRefused},
        });
    EXPECT_EQ(linesOf(*readHeader("Authorization: Digest username=\"u\"")), "Authorization: Digest username=\"u\"");
    // what the host tells is not taken from the peer
    const auto received = readAs<KxSipAuthorizationHeader>(
        "Authorization: Digest response=\"x\",password=\"p\",Method=GET,entity-body=\"x\",qopoptions=\"auth\"");
    for (const char* const name : {"password", "method", "entity-body", "qopoptions"}) {
        EXPECT_TRUE(received->getDigestCredentials()->getProperty(name).isNil()) << name;
    }
    EXPECT_EQ(linesOf(*KxMake<KxSipAuthorizationHeader>(KxMake<KxSipOtherCredentialsInfo>("Bearer", "abc"))),
              "Authorization: Bearer abc");
    EXPECT_NE(outcomeOf([] { KxMake<KxSipOtherChallengeInfo>("Basic", "a\r\nb"); }), "");
}

TEST(RFCDigestTest, AuthenticationInfo) {
    expectRows<KxSipAuthenticationInfoHeader, &KxSipAuthenticationInfoHeader::getRspauth>({
        {"Authentication-Info: rspauth=\"\\\\\", qop=\"auth\", nc=00000001, cnonce=c, y=z", "\\",
         "Authentication-Info: rspauth=\"\\\\\",qop=auth,nc=00000001,cnonce=\"c\",y=\"z\""},
        {"Authentication-Info: rspauth", "", kRefused},
    });
}

TEST(RFCDigestTest, QopOptionsAreAList) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"auth-int", "auth", ""},
        {" auth-int ,\tAUTH", "auth", "auth"},
        {"auth", "auth-int", ""},
        {"", "", ""},
    };
    for (const auto& [options, qop, result] : rows) {
        KxSipDigestCredentialsInfo credentials(challengeOf(std::string("realm=r,qop=\"") + options + '"'), "u", "p");
        credentials.setQop(qop, "c", 1);
        EXPECT_EQ(credentials.getProperty("qop"), result) << options;
    }
}

TEST(RFCDigestTest, TheTopmostChallengeThatCanBeAnswered) {
    const std::string basic = "WWW-Authenticate: Basic realm=\"a\"\r\n";
    const std::string other = "WWW-Authenticate: Digest realm=\"a\",nonce=\"1\",algorithm=AKAv1-MD5\r\n";
    const std::string sha = "WWW-Authenticate: Digest realm=\"a\",nonce=\"2\",algorithm=SHA-512-256\r\n";
    const std::string md5 = "WWW-Authenticate: Digest realm=\"a\",nonce=\"3\"\r\n";
    const std::string proxy = "Proxy-Authenticate: Digest realm=\"b\",nonce=\"4\"\r\n";
    const std::pair<std::string, std::string> rows[] = {
        {basic + other + sha + md5 + proxy, sha},
        {basic + other + md5 + sha, md5},
        {proxy + basic + other, proxy},
        {basic + other, basic},
    };
    for (const auto& [lines, chosen] : rows) {
        const auto message = readMessage("SIP/2.0 401 No\r\n" + requiredHeaders("REGISTER") + lines + "\r\n");
        EXPECT_EQ(message->getStatus(), 0U);
        const auto header = KxHandleCast<KxSipResponse>(message)->getAuthenticateHeader();
        EXPECT_EQ(lineOf(*header) + "\r\n", chosen);
        const auto challenge = header->getDigestChallenge();
        EXPECT_EQ(KxSipDigestCredentialsInfo::sCanAnswer(challenge), chosen != basic);
    }
    EXPECT_EQ(outcomeOf([] { KxMake<KxSipDigestCredentialsInfo>(challengeOf("algorithm=SHA-512"), "u", "p"); }),
              "KxException: Unsupported Algorithm: Only MD5 is supported !!!");
}

TEST(RFCDigestTest, NumbersComeFromTheSystem) {
    std::set<std::string> numbers;
    for (int i = 0; i < 4; ++i) { // two of them would be equal for about one run in three million
        std::srand(1);
        numbers.insert(std::to_string(KxSipCSeq()));
        numbers.insert(KxSipTag("p").getValue());
    }
    EXPECT_EQ(numbers.size(), 8U);
    EXPECT_EQ(numbers.rbegin()->compare(0, 2, "p-"), 0);
    EXPECT_EQ(std::string_view(KxSipTag(nullptr)).size(), 36U);
}
