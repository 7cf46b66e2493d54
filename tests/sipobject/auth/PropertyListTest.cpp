#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/headers/KxSipAuthenticationInfoHeader.h"
#include "tests/core/LogCapture.h"
#include "tests/sipobject/support/HeaderSupport.h"

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

/** The reader of property lists as one would write it down: a character at a time, everything kept in one buffer. */
std::string plainly(std::string_view text, bool isInfo) {
    KxParameters list;
    std::string buffer;
    std::string name;
    std::size_t start = 0;
    std::size_t read = 0;
    bool isOpen = false;
    bool isQuoted = false;
    bool isEnded = false;
    bool isStopped = false;
    for (; read < text.size() && !isStopped; ++read) {
        const char c = text[read];
        isEnded = isEnded || c == '\n';
        if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == ',' || c == '\n') {
            if (isQuoted || !isOpen) {
                buffer += c;
                continue;
            }
            list.setValue(name, KxString(buffer.substr(start).c_str()));
            start = buffer.size();
            isOpen = false;
            isStopped = isEnded;
        } else if (c == '=') {
            if (isOpen) {
                buffer += c;
                continue;
            }
            name = KxAscii::trim(std::string_view(buffer).substr(start));
            start = buffer.size();
            isOpen = true;
        } else if (isQuoted || c != ' ') {
            buffer += c;
        }
    }
    const std::string value = buffer.substr(start);
    if (!isStopped && isOpen && !name.empty() && !value.empty()) {
        if (!isInfo) {
            std::transform(name.begin(), name.end(), name.begin(), &KxAscii::toLower);
        }
        list.setValue(name, KxString(value.c_str()));
    } else if (!isStopped && !isInfo) {
        return std::string(kNoLast) + "@";
    }
    if (isInfo) {
        return list.getString().c_str();
    }
    std::string quoted;
    for (const KxParameters::Pair& pair : list) {
        quoted.append(quoted.empty() ? "" : ",").append(pair.name.view()).append("=\"");
        quoted.append(pair.value.view()).append("\"");
    }
    return quoted + "@" + std::string(text.substr(read));
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
    struct Row {
        std::string text;
        std::string outcome;
    };
    const Row rows[] = {
        {R"(realm="atlanta.example", nonce="84a4cc6f", opaque="", stale=FALSE, algorithm=MD5, qop="auth,auth-int")",
         R"(realm="atlanta.example",nonce="84a4cc6f",opaque="",stale=FALSE,algorithm=MD5,qop="auth,auth-int")"},
        {R"(realm=a,nonce=YWJj==)", R"(realm="a",nonce="YWJj==")"},
        {R"(Realm=a,Nonce=b)", R"(Realm="a",nonce="b")"},
        {R"(STALE="x y",Algorithm="a",URI="u")", R"(STALE=x y,Algorithm=a,uri=u)"},
        {R"(a=1,b=,A=2,c=3)", R"(a="2",b="",c="3")"},
        {"\ta\t=\t1\t , b=\t", "a=\"\t1\t\",b=\"\t\""},
        {R"(,a,=1,,b=2)", R"(,a,="1",,b="2")"},
        {R"(a="1\",b="2")", R"(a="1\",b="2")"},
        {R"(a="1,b=2)", R"(a="1,b=2")"},
        {"a=1\nb=2", R"(a="1")"},
        {"\na=1,b=2", R"(a="1")"}, // a line feed in the name is trimmed, but ends reading behind the value
        {"a=\"1\n\",b=2", "a=\"1\n\""},
        {"a=1\r\n", "a=\"1\r\""},
        {R"(=1,a=2)", R"(="1",a="2")"},
        {R"(realm="a",opaque="")", kNoLast},
        {R"(realm="a",)", kNoLast},
        {R"(realm="a",nonce)", kNoLast},
        {R"(=a)", kNoLast},
        {"", kNoLast},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(challengeOf(row.text), row.outcome) << row.text;
    }
}

TEST(PropertyListTest, EveryShortTextReadsAsWrittenDownPlainly) {
    forEveryText("aB=\", \n", 6, [](const std::string& text) {
        EXPECT_EQ(readEveryWay(text, [](KxInputStream& in) { return challengeOf(in); }), plainly(text, false)) << text;
    });
    forEveryText("aB=\", ", 6, [](const std::string& text) {
        const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
        EXPECT_EQ(infoOf(text), plainly(std::string_view(text).substr(begin), true)) << text;
    });
}

TEST(PropertyListTest, Limit) {
    const auto filled = [](std::size_t kept, const std::string& behind = "") {
        return "a=\"" + std::string(kept - 1, 'x') + behind + "\"";
    };
    const auto isRead = [](const std::string& text) { return challengeOf(text).find("Kx") != 0; };
    EXPECT_TRUE(isRead(filled(1023)));
    EXPECT_TRUE(isRead(filled(1024)));
    EXPECT_EQ(challengeOf(filled(1025)), kOverflow);
    // all that was kept counts, in properties that are read already too
    const std::string front = repeated("ab=\"cd\", ", 255) + "n="; // 1021 characters
    EXPECT_TRUE(isRead(front + "123"));
    EXPECT_EQ(challengeOf(front + "1234"), kOverflow);
    EXPECT_TRUE(isRead(repeated("ab=\"cd\", ", 255) + "abc=\"d\"")); // 1024, the comma behind it none
    EXPECT_EQ(challengeOf(repeated("ab=\"cd\", ", 255) + "abc=\"d\",e=f"), kOverflow);
    // blanks are not kept, but none may follow a full buffer
    EXPECT_TRUE(isRead(std::string(100000, ' ') + filled(1024)));
    EXPECT_EQ(challengeOf(filled(1024) + " "), kOverflow);
    EXPECT_EQ(challengeOf("a=\"" + std::string(1023, 'x') + "\", b=\"\""), kOverflow);
    // commas, line feeds and "=" count, and go beyond it
    for (const char* const unlimited : {",", "=", "\n"}) {
        const std::string many = repeated(unlimited, 100000);
        const std::string expected = filled(1024, many);
        EXPECT_EQ(challengeOf(expected), expected);
        EXPECT_EQ(challengeOf(filled(1, many + "x")), kOverflow);
    }
    const std::string commas(100000, ',');
    EXPECT_EQ(challengeOf(commas + "==="), commas + "=\"==\"");

    const std::string info = filled(100000, commas) + ",c=" + std::string(100000, '=') + "d";
    EXPECT_EQ(infoOf(info).size(), 2 + 99999 + 100000 + 3 + 100000 + 1);
    EXPECT_EQ(infoOf(repeated("a=\"b\",", 100000) + "c=d"), "a=b;c=d");
    EXPECT_EQ(infoOf(repeated("\"\"", 100000) + "c=d"), "c=d");
}

TEST(PropertyListTest, AChallengeIsLogged) {
    LogCapture capture;
    log4cplus::Logger::getInstance("tandril.kx.KxSipDigestChallengeInfo").setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    challengeOf("realm=a, nonce=b");
    challengeOf("realm=a\n"); // a line that ends ends reading, too
    ASSERT_EQ(capture.records.size(), 1U);
    EXPECT_EQ(capture.records[0].file, "KxSipDigestChallengeInfo");
    EXPECT_EQ(capture.texts().front(),
              "KxSipDigestChallengeInfo::parse : prop.size()=2,prop.getString()=realm=a;nonce=b");
}
