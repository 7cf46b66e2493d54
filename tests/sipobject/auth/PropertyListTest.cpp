#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "tests/sipobject/support/HeaderSupport.h"
#include "tests/sipobject/support/PlainPropertyList.h"

namespace {

constexpr const char* kOverflow = "KxException: Buffer overflew !!!";
constexpr const char* kNoLast = "KxException: Failed to parse Proxy-Authenticate SIP header";

/** What a challenge makes of its properties. Credentials must read the same texts, and refuse the same. */
std::string challengeOf(KxInputStream& in) {
    return outcomeOf([&in] {
        const KxHandle<KxSipDigestChallengeInfo> challenge = KxMake<KxSipDigestChallengeInfo>();
        try {
            challenge->parse(in);
        } catch (const KxHandle<KxException>&) {
            readRest(in); // where reading stopped is nobody's business then
            throw;
        }
        return written(*challenge);
    });
}

std::string challengeOf(std::string_view text) {
    const HeapText bytes(text);
    KxByteArrayInputStream in(bytes.view());
    std::string outcome = challengeOf(in);
    const std::string credentials = outcomeOf([&] {
        KxByteArrayInputStream again(bytes.view());
        KxMake<KxSipDigestCredentialsInfo>()->parse(again);
        return std::string();
    });
    EXPECT_EQ(credentials, outcome.find("Kx") == 0 ? outcome : "") << text;
    return outcome;
}

std::string infoOf(const std::string& text) {
    return std::string(KxMake<KxSipAuthenticationInfoHeader>(text.c_str())->getParameters()->getString().view());
}

std::string plainChallengeOf(const std::string& text) {
    const PlainPropertyList plain(text, false);
    return (plain.failure.empty() ? plain.written({}) : "KxException: " + plain.failure) + "@" +
           text.substr(plain.read);
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string all;
    while (times-- != 0) {
        all += text;
    }
    return all;
}

} // namespace

TEST(PropertyListTest, Challenges) {
    const std::pair<std::string, std::string> rows[] = {
        {R"(Realm=a,Nonce=b)", R"(Realm="a",nonce="b")"},
        {R"(STALE="x y",Algorithm="a",URI="u")", R"(STALE=x y,Algorithm=a,uri=u)"},
        {"\ta\t=\t1\t , b=\t", "a=\"\t1\t\",b=\"\t\""},
        {R"(a="1\",b="2")", R"(a="1\",b="2")"},
        {"\na=1,b=2", R"(a="1")"}, // a line feed in the name is trimmed, but ends reading behind the value
        {"a=1\r\n", "a=\"1\r\""},
        {R"(realm="a",nonce)", kNoLast},
    };
    for (const auto& [text, outcome] : rows) {
        EXPECT_EQ(challengeOf(text), outcome) << text;
    }
}

TEST(PropertyListTest, EveryShortTextReadsAsWrittenDownPlainly) {
    forEveryText("aB=\", \n", 6, [](const std::string& text) {
        EXPECT_EQ(readEveryWay(text, [](KxInputStream& in) { return challengeOf(in); }), plainChallengeOf(text))
            << text;
    });
    forEveryText("aB=\", ", 6, [](const std::string& text) {
        const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
        EXPECT_EQ(infoOf(text), PlainPropertyList(std::string_view(text).substr(begin), true).list.getString()) << text;
    });
}

TEST(PropertyListTest, Limit) {
    const auto filled = [](std::size_t kept, const std::string& behind = "") {
        return "a=\"" + std::string(kept - 1, 'x') + behind + "\"";
    };
    const std::string front = repeated("ab=\"cd\", ", 255); // 1,019 characters are kept of it
    const std::string commas(100000, ',');
    std::vector<std::string> texts = {filled(1024), filled(1025),
                                      // all that was kept counts, in properties that are read already too
                                      front + "n=123", front + "n=1234", front + "abc=\"d\"", front + "abc=\"d\",e=f",
                                      front + "abc=\"de\",=", front + "abc=defg,h=i",
                                      // blanks are not kept, but none may follow a full buffer
                                      std::string(100000, ' ') + filled(1024), filled(1024) + " ",
                                      "a=\"" + std::string(1023, 'x') + "\", b=\"\"", commas + "==="};
    // commas, line feeds and "=" count, and go beyond it
    for (const char* const unlimited : {",", "=", "\n"}) {
        texts.push_back(filled(1024, repeated(unlimited, 100000)));
        texts.push_back(filled(1, repeated(unlimited, 100000) + "x"));
    }
    std::size_t refused = 0;
    for (const std::string& text : texts) {
        const std::string outcome = challengeOf(text);
        EXPECT_EQ(outcome + "@", plainChallengeOf(text).substr(0, outcome.size() + 1));
        KxSipDigestChallengeInfo challenge; // what went well before is kept, and nothing after
        KxByteArrayInputStream in{std::string_view(text)};
        outcomeOf([&] { challenge.parse(in); });
        EXPECT_EQ(written(challenge), PlainPropertyList(text, false).written({}));
        refused += outcome == kOverflow ? 1 : 0;
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
    challengeOf("realm=a\n"); // a line that ends ends reading, too
    ASSERT_EQ(capture.records.size(), 1U);
    EXPECT_EQ(capture.records[0].file, "KxSipDigestChallengeInfo");
    EXPECT_EQ(capture.texts().front(),
              "KxSipDigestChallengeInfo::parse : prop.size()=2,prop.getString()=realm=a;nonce=b");
}
