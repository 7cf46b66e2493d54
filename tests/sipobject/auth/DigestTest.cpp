#include "sipobject/address/KxURI.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "tests/sipobject/support/MessageSupport.h"
#include "util/KxHexEncoding.h"

namespace {

constexpr const char* kUnsupported = "KxException: Unsupported Algorithm: Only MD5 is supported !!!";
constexpr const char* kUser = "Mufasa";
constexpr const char* kRealm = "testrealm@host.com";
constexpr const char* kPassword = "Circle Of Life";
constexpr const char* kNonce = "dcd98b7102dd2f0e8b11d0f600bfb0c093";

using Credentials = KxHandle<KxSipDigestCredentialsInfo>;

KxHandle<KxByteArray> arrayOf(std::string_view text) {
    return KxByteArray::sCreate(text.size(), text.data());
}

KxHandle<KxSipDigestChallengeInfo> challengeWith(const char* algorithm, const char* qopOptions) {
    auto challenge = KxMake<KxSipDigestChallengeInfo>(kRealm);
    challenge->setProperty("nonce", kNonce);
    challenge->setProperty("algorithm", algorithm);
    challenge->setProperty("qop", qopOptions);
    return challenge;
}

struct Row {
    const char* algorithm;
    const char* password;
    const char* qop;  ///< Null for none.
    const char* body; ///< Null for none.
    const char* response;
};

Credentials build(const Row& row) {
    auto credentials = KxMake<KxSipDigestCredentialsInfo>(challengeWith(row.algorithm, row.qop), kUser, row.password);
    credentials->setMethod("GET");
    KxByteArrayInputStream uri{std::string_view("uri=/dir/index.html")};
    credentials->parse(uri);
    credentials->setQop(row.qop, "0a4f113b", 1);
    credentials->setEntityBody(row.body);
    return credentials;
}

Credentials receive(const std::string& text, const Row& row) {
    Credentials credentials = KxSipDigestCredentialsInfo::sCreateFrom(arrayOf(text));
    credentials->setMethod("GET");
    credentials->setEntityBody(row.body);
    return credentials;
}

} // namespace

// The first two responses are printed in RFC 2617 3.5 and follow from RFC 2069. All were made with openssl:
//     h() { printf '%s' "$1" | openssl md5 | sed 's/.* //'; }
//     h "$(h Mufasa:testrealm@host.com:"$PASSWORD"):$NONCE:00000001:0a4f113b:auth:$(h GET:/dir/index.html)"
// For auth-int A2 is "GET:/dir/index.html:" and the digest of the body, or nothing. The A1 of MD5-sess is made of raw bytes:
//     (printf '%s' Mufasa:testrealm@host.com:"$PASSWORD" | openssl md5 -binary; printf ':%s:0a4f113b' $NONCE) | openssl md5
// and where `xxd` shows a zero byte at place N of these, of `head -c N` alone.
TEST(DigestTest, Responses) {
    const Row rows[] = {
        {"MD5", kPassword, "auth", nullptr, "6629fae49393a05397450978507c4ef1"},
        {"MD5", kPassword, nullptr, nullptr, "670fd8c2df070c60b045671b8b24ff02"},
        {"MD5", kPassword, "auth", "v=0\r\n", "6629fae49393a05397450978507c4ef1"},
        {"MD5", kPassword, "auth-int", "v=0\r\n", "151b6cabb7e59e0ac757207a039ff3d0"},
        {"MD5", kPassword, "auth-int", nullptr, "087b7c9488f3191dc19f795e173854b1"},
        {"MD5", kPassword, "auth-int", "", "087b7c9488f3191dc19f795e173854b1"},
        {"MD5-sess", kPassword, "auth", nullptr, "68c13aa36c0e5ab2e1e1e684dacc873b"},
        {"MD5-sess", kPassword, nullptr, nullptr, "a5285c0d5d9004f50dad176467ec02b4"},
        {"MD5-sess", "secret163", "auth", nullptr, "dd46b6519790c54508f56a10bae346d9"}, // zero at 7
        {"MD5-sess", "secret253", "auth", nullptr, "ac1f8b14869676696911fd5376622e67"}, // zero at 0
        {"MD5-SESS", kPassword, "auth", nullptr, "6629fae49393a05397450978507c4ef1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.algorithm) + " " + row.response);
        const Balance balance;
        const Credentials made = build(row);
        EXPECT_EQ(KxHexEncoding::toHex(made->getRequestDigest()), row.response);
        const std::string text = written(*made);
        const std::string qop =
            row.qop == nullptr ? "" : std::string(",qop=\"") + row.qop + "\",nc=00000001,cnonce=\"0a4f113b\"";
        EXPECT_EQ(text, std::string("username=\"Mufasa\",realm=\"testrealm@host.com\",nonce=\"") + kNonce +
                            "\",response=\"" + row.response + "\",uri=\"/dir/index.html\",algorithm=" + row.algorithm +
                            qop);
        const Credentials received = receive(text, row);
        EXPECT_EQ(written(*received), text);
        EXPECT_TRUE(received->validate(kUser, row.password, kRealm));
        EXPECT_FALSE(received->validate(kUser, "Circle Of Life ", kRealm));
        EXPECT_FALSE(received->validate("mufasa", row.password, kRealm));
        EXPECT_FALSE(received->validate(kUser, row.password, "other"));
        EXPECT_TRUE(received->validate(kUser, row.password, kRealm));
        EXPECT_EQ(written(*received), text);
    }
}

TEST(DigestTest, AnyOtherResponseIsRefused) {
    const Row row = {"MD5", kPassword, "auth", nullptr, ""};
    const std::string text = written(*build(row));
    const std::size_t response = text.find("response=\"") + 10;
    for (std::size_t at = response; at < response + 32; ++at) {
        std::string other = text;
        other[at] = other[at] == '0' ? '1' : '0';
        EXPECT_FALSE(receive(other, row)->validate(kUser, kPassword, kRealm)) << other;
    }
    const std::string responses[] = {"", text.substr(response, 31), text.substr(response, 32) + "0",
                                     "6629FAE49393A05397450978507C4EF1"};
    for (const std::string& other : responses) {
        const std::string changed = std::string(text).replace(response, 32, other);
        EXPECT_FALSE(receive(changed, row)->validate(kUser, kPassword, kRealm)) << changed;
    }
    // a password that the peer sends is not used
    const std::string forged = "username=u,realm=r,nonce=n,uri=s,algorithm=MD5,password=p";
    const Credentials own = KxSipDigestCredentialsInfo::sCreateFrom(arrayOf(forged));
    own->setMethod("GET");
    const std::string digest(KxHexEncoding::toHex(own->getRequestDigest()).view());
    const Credentials received = receive(forged + ",response=" + digest, row);
    EXPECT_FALSE(received->validate("u", KxString(), "r"));
    EXPECT_FALSE(received->validate(KxString(), "p", "r"));
    EXPECT_TRUE(received->validate("u", "p", "r"));
}

TEST(DigestTest, AlgorithmsThatAreRefused) {
    for (const char* const algorithm : std::initializer_list<const char*>{nullptr, "", "md5", "MD", "SHA-256"}) {
        const auto challenge = challengeWith(algorithm, "auth");
        EXPECT_EQ(outcomeOf([&] { KxMake<KxSipDigestCredentialsInfo>(challenge, "u", "p"); }), kUnsupported);
    }
    const Credentials none = KxMake<KxSipDigestCredentialsInfo>();
    KxByteArrayOutputStream out;
    const std::function<void()> uses[] = {
        [&] { none->generateA1(); },           [&] { none->generateA2(); },
        [&] { none->getRequestDigest(); },     [&] { none->setEntityBody("x"); },
        [&] { none->setEntityBody(nullptr); }, [&] { none->validate("u", "p", "r"); },
        [&] { none->serialize(out); },
    };
    for (const auto& use : uses) {
        EXPECT_EQ(outcomeOf(use), kUnsupported);
    }
    EXPECT_EQ(out.view(), "");
    EXPECT_EQ(outcomeOf([] { KxSipChallengeInfo::constructFrom("Basic", arrayOf("realm=a")); }),
              "KxException: Challenge type not supported !");
    EXPECT_EQ(outcomeOf([] { KxSipCredentialsInfo::constructFrom("Digest2", arrayOf("realm=a")); }),
              "KxException: Credentials type not supported !");
    EXPECT_EQ(written(*KxSipChallengeInfo::constructFrom("dIGEST", arrayOf("realm=a"))), "realm=\"a\"");
    EXPECT_EQ(written(*KxSipCredentialsInfo::constructFrom("digest", arrayOf("response=a"))),
              "username=\"\",realm=\"\",nonce=\"\",response=\"a\",uri=\"\"");
}

TEST(DigestTest, Qop) {
    // options; qop; count; result: qop, cnonce and nc, which are nil if nothing is set
    const std::tuple<const char*, const char*, std::int32_t, const char*> rows[] = {
        {"auth", "auth", 255, "auth|c|000000ff"},
        {"auth,auth-int", "auth-int", -1, "auth-int|c|ffffffff"},
        {"auth-int", "auth", 0x7FFFFFFF, "auth|c|7fffffff"},
        {"auth", "auth-int", 1, "||"},
        {"auth", "AUTH", 1, "||"},
        {"auth", nullptr, 1, "||"},
        {nullptr, "auth", 1, "||"},
    };
    for (const auto& [options, qop, count, result] : rows) {
        KxSipDigestCredentialsInfo credentials(challengeWith("MD5", options), "u", "p");
        credentials.setQop(qop, "c", count);
        const KxString nc = credentials.getProperty("nc");
        EXPECT_EQ(joined(credentials.getProperty("qop"), credentials.getProperty("cnonce"), nc), result);
        EXPECT_EQ(nc.isNil(), result[0] == '|');
    }
}

TEST(DigestTest, SecretsStayWhereTheyAre) {
    LogCapture capture;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    auto challenge = challengeWith("MD5", "auth-int");
    challenge->setProperty("opaque", "");
    const Credentials credentials = KxMake<KxSipDigestCredentialsInfo>(challenge, "u", "sesame");
    KxByteArrayInputStream uri{std::string_view("sip:h;lr")};
    credentials->setDigestURI(KxURI::sConstructFrom(uri, true));
    credentials->setQop("auth-int", "c", 1);
    credentials->setEntityBody("body");
    const Credentials copy(credentials->clone());
    EXPECT_FALSE(copy->validate("u", "open", kRealm));
    EXPECT_EQ(credentials->getPassword(), "sesame");
    const std::string text = written(*credentials);
    EXPECT_THAT(text, testing::HasSubstr("\",uri=\"sip:h;lr\",algorithm=MD5,opaque=\"\",qop=\"auth-int\",nc=00000001"));
    EXPECT_THAT(text, testing::Not(testing::ContainsRegex("sesame|password|method|qopoptions|entity")));
    for (const LogRecord& record : capture.records) {
        EXPECT_THAT(record.text, testing::Not(testing::ContainsRegex("sesame|open")));
    }
    EXPECT_FALSE(capture.records.empty());
}
