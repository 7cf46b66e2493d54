#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "tests/sipobject/support/HeaderSupport.h"
#include "tests/sipobject/support/PlainPropertyList.h"

/** What a challenge makes of its properties. Credentials must refuse the same texts. */
static std::string challengeOf(std::string_view text) {
    const auto read = [text]<class Info>(const KxHandle<Info>& info) {
        KxByteArrayInputStream in(text);
        return outcomeOf([&] { info->parse(in); });
    };
    const auto challenge = KxMake<KxSipDigestChallengeInfo>();
    const std::string failure = read(challenge);
    EXPECT_EQ(read(KxMake<KxSipDigestCredentialsInfo>()), failure) << text;
    return failure.empty() ? written(*challenge) : failure;
}

static std::string infoOf(const std::string& text) {
    return std::string(KxMake<KxSipAuthenticationInfoHeader>(text.c_str())->getParameters()->getString().view());
}

TEST(PropertyListTest, Challenges) {
    const std::pair<std::string, std::string> rows[] = {
        {R"(Realm=a,Nonce=b)", R"(Realm="a",nonce="b")"},
        {R"(STALE="x y",Algorithm="a",URI="u")", R"(STALE=x y,Algorithm=a,uri=u)"},
        {"\ta\t=\t1\t , b=\t", "a=\"\t1\t\",b=\"\t\""},
        {R"(a="1\",b="2")", R"(a="1\",b="2")"},
        {"\na=1,b=2", R"(a="1")"}, // a line feed in the name is trimmed, but reading ends after the value
        {"a=1\r\n", "a=\"1\r\""},
        {R"(realm="a",nonce)", "KxException: Failed to parse Proxy-Authenticate SIP header"},
    };
    for (const auto& [text, outcome] : rows) {
        EXPECT_EQ(challengeOf(text), outcome) << text;
    }
}

/** The lists of challenges and credentials are compared so by fuzz/fuzz_digest.cpp in the test exhaust.digest. */
TEST(PropertyListTest, EveryShortAuthenticationInfoReadsAsWithThePlainReader) {
    forEveryText("aB=\", ", 6, [](const std::string& text) {
        const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
        EXPECT_EQ(infoOf(text), PlainPropertyList(std::string_view(text).substr(begin), true).list.getString()) << text;
    });
}

TEST(PropertyListTest, Limit) {
    const auto filled = [](std::size_t kept, const std::string& after = "") {
        return "a=\"" + std::string(kept - 1, 'x') + after + "\"";
    };
    const std::string front = repeated("ab=\"cd\", ", 255); // 1,019 characters are kept of it
    const std::string commas(100000, ',');
    std::vector<std::string> texts = {filled(1024), filled(1025),
                                      // all characters kept so far count, also those of earlier properties
                                      front + "n=123", front + "n=1234", front + "abc=\"d\"", front + "abc=\"d\",e=f",
                                      front + "abc=\"de\",=", front + "abc=defg,h=i",
                                      // blanks are not kept, but are refused after a full buffer
                                      std::string(100000, ' ') + filled(1024), filled(1024) + " ",
                                      "a=\"" + std::string(1023, 'x') + "\", b=\"\"", commas + "==="};
    // commas, line feeds and "=" count, but are not refused
    for (const char* const unlimited : {",", "=", "\n"}) {
        texts.push_back(filled(1024, repeated(unlimited, 100000)));
        texts.push_back(filled(1, repeated(unlimited, 100000) + "x"));
    }
    std::size_t refused = 0;
    for (const std::string& text : texts) {
        const PlainPropertyList plain(text, false);
        EXPECT_EQ(challengeOf(text), plain.failure.empty() ? plain.written({}) : "KxException: " + plain.failure);
        KxSipDigestChallengeInfo challenge; // what was read before a failure is kept
        KxByteArrayInputStream in{std::string_view(text)};
        outcomeOf([&] { challenge.parse(in); });
        EXPECT_EQ(written(challenge), plain.written({}));
        refused += "KxException: " + plain.failure == "KxException: Buffer overflew !!!" ? 1 : 0;
    }
    EXPECT_EQ(refused, 10U);

    const std::string info = filled(100000, commas) + ",c=" + std::string(100000, '=') + "d";
    EXPECT_EQ(infoOf(info).size(), 2 + 99999 + 100000 + 3 + 100000 + 1);
    EXPECT_EQ(infoOf(repeated("a=\"b\",", 100000) + "c=d"), "a=b;c=d");
    EXPECT_EQ(infoOf(repeated("\"\"", 100000) + "c=d"), "c=d");
}

TEST(PropertyListTest, AChallengeIsLogged) {
    ClassLog capture("tandril.kx.KxSipDigestChallengeInfo");
    challengeOf("realm=a, nonce=b");
    challengeOf("realm=a\n"); // the line end ends reading: no record
    EXPECT_EQ(std::ranges::count(capture.records, "KxSipDigestChallengeInfo", &LogRecord::file), 1);
    EXPECT_THAT(capture.texts(), testing::ElementsAre("KxSipDigestChallengeInfo::parse : prop.size()=2,"
                                                      "prop.getString()=realm=a;nonce=b"));
}
