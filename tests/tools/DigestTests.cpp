#include "tests/tools/ToolRun.h"

using namespace std::string_literals;

const std::string kHeaders = kDialog + "CSeq: 1 REGISTER\r\n";
const std::string kChallenge = "Digest realm=\"r\",nonce=\"n\",algorithm=MD5,qop=\"auth,auth-int\"\r\n";

static std::string response(int code, const std::string& headers) {
    return "SIP/2.0 " + std::to_string(code) + " No\r\n" + kHeaders + headers + kNoBody;
}

static std::string request(const std::string& headers, const std::string& body = "") {
    return "REGISTER sip:d SIP/2.0\r\n" + kHeaders + headers + (body.empty() ? "" : "Content-Type: a/b\r\n") +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

TEST(DigestCommandTest, AnAnswerIsVerified) {
    const std::string digest = " Digest username=\"u\",realm=\"r\",nonce=\"n\",response=\"";
    // input; options; content of the body; start of the header that is printed
    const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
        {response(407, "Proxy-Authenticate: " + kChallenge), "", "", "Proxy-Authorization:"},
        {response(401, "Proxy-Authenticate: Digest a=b\r\nWWW-Authenticate: Basic a=b\r\nWWW-Authenticate: Digest "
                       "a=b,algorithm=x\r\n"
                       "WWW-Authenticate: " +
                           kChallenge),
         " --qop auth-int --cnonce c --nc 17", "body", "Authorization:"},
        {response(407, "Proxy-Authenticate: Digest realm=r,nonce=n\r\n"), " --grammar classic --algorithm MD5", "",
         "Proxy-Authorization:"},
        {response(401, "WWW-Authenticate: Digest realm=\"o\",nonce=n,algorithm=x\r\nWWW-Authenticate: " + kChallenge),
         " --algorithm md5", "", "Authorization:"},
    };
    const Scratch scratch;
    const std::string password = " --password-file " + scratch.write("password", "pa ss\r\nno more\n");
    const std::string wrong = " --password-file " + scratch.write("wrong", "pa ss ");
    for (const auto& [input, options, content, start] : rows) {
        const std::string body = content.empty() ? "" : " --body " + scratch.write("body", content);
        const ToolRun run = kxsip("digest answer --user u" + password + options + body, input);
        EXPECT_EQ(run.out.substr(0, start.size() + digest.size()), start + digest);
        EXPECT_EQ(run, (ToolRun{0, run.out, ""}));
        const std::string answered = request(run.out, content);
        EXPECT_EQ(kxsip("digest verify --user u" + password, answered), (ToolRun{0, "", ""}));
        for (const std::string& other : {"u" + wrong, "v" + password, "u --method INVITE" + password}) {
            EXPECT_EQ(kxsip("digest verify --user " + other, answered), (ToolRun{1, "", ""}));
        }
    }
}

TEST(DigestCommandTest, WhatIsRefused) {
    const std::string credentials = "Authorization: Digest username=u,response=x";
    const std::string challenged = response(401, "WWW-Authenticate: " + kChallenge);
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"answer", request(""), "KxException: Only a 401 or 407 can be answered"},
        {"answer", response(200, "WWW-Authenticate: " + kChallenge), "KxException: Only a 401 or 407 can be answered"},
        {"answer", response(407, "WWW-Authenticate: " + kChallenge), "KxException: The response has no challenge"},
        {"answer --qop auth-x --cnonce c", challenged, "KxException: The challenge does not offer this qop"},
        {"answer --uri nothing", challenged, "KxException: INVALID URI"},
        {"answer", "", "KxSipParseError: SIP Method Token Expected"},
        {"verify", request(""), "KxException: The request has no credentials"},
        {"verify", request("Authorization: Basic x\r\n"), "KxException: The credentials are not of the Digest scheme"},
        {"verify", response(200, ""), "KxException: Only a request can be verified"},
        {"verify", request(credentials + ",algorithm=x\r\n"),
         "KxException: Unsupported Algorithm: Only MD5 is supported !!!"},
    };
    const Scratch scratch;
    const std::string options = " --user u --password-file " + scratch.write("password", "sesame");
    for (const auto& [command, input, why] : rows) {
        EXPECT_EQ(kxsip("digest " + command + options, input), refusal(why)) << command;
    }
    EXPECT_EQ(kxsip("digest verify" + options, request(credentials + "\r\n")), (ToolRun{1, "", ""}));
    EXPECT_EQ(kxsip("digest verify --number 1" + options, request("")).err, "kxsip: - has no message 1\n");
    EXPECT_EQ(kxsip("digest verify --user u --password-file /absent").exit, 3);
    EXPECT_EQ(kxsip("digest answer --body /absent" + options).exit, 3);
    const ToolRun both = kxsip("digest answer --user u --password-file - -", "sesame");
    EXPECT_EQ(both.exit, 64);
    EXPECT_THAT(both.err, testing::HasSubstr("only one of message, password and body can be read from standard input"));
    for (const std::string& wrong : {""s, " verify --user u"s, " answer --qop auth" + options}) {
        EXPECT_EQ(kxsip("digest" + wrong).exit, 64) << wrong;
    }
    // a header that can't be written is reported, the rest of the message and the next one are written
    EXPECT_EQ(kxsip("show --wire --grammar classic", request("Authorization: Digest username=u\r\n") + request("")),
              (ToolRun{2, request("") + request(""),
                       refusal("KxException: Unsupported Algorithm: Only MD5 is supported !!!").err}));
}
