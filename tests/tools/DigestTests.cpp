#include "tests/tools/ToolRun.h"

#include <gmock/gmock.h>

namespace {

const std::string kDialog = "Via: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bKa\r\nFrom: <sip:a@b>;tag=1\r\n"
                            "To: <sip:c@d>\r\nCall-ID: x@y\r\nCSeq: 1 REGISTER\r\n";
const std::string kNoBody = "Content-Length: 0\r\n\r\n";
const std::string kChallenge = "Digest realm=\"r\",nonce=\"n\",algorithm=MD5,qop=\"auth,auth-int\"\r\n";

std::string response(int code, const std::string& headers) {
    return "SIP/2.0 " + std::to_string(code) + " No\r\n" + kDialog + headers + kNoBody;
}

std::string request(const std::string& headers, const std::string& body = "") {
    return "REGISTER sip:d SIP/2.0\r\n" + kDialog + headers + (body.empty() ? "" : "Content-Type: a/b\r\n") +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

} // namespace

TEST(DigestCommandTest, AnAnswerIsVerified) {
    struct Row {
        std::string input;
        std::string options;
        std::string body;
        std::string start; ///< Of the header that is printed.
    };
    const std::string digest = " Digest username=\"u\",realm=\"r\",nonce=\"n\",response=\"";
    const Row rows[] = {
        {response(401, "WWW-Authenticate: " + kChallenge), "", "", "Authorization:"},
        {response(407, "Proxy-Authenticate: " + kChallenge), " --qop auth --cnonce c", "", "Proxy-Authorization:"},
        {response(401, "Proxy-Authenticate: Digest a=b\r\nWWW-Authenticate: " + kChallenge),
         " --qop auth-int --cnonce c --nc 17", "body", "Authorization:"},
    };
    const Scratch scratch;
    const std::string password = " --password-file " + scratch.write("password", "pa ss\r\nno more\n");
    const std::string wrong = " --password-file " + scratch.write("wrong", "pa ss ");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.start + row.options);
        std::string command = "digest answer --user u" + password + row.options;
        command.append(row.body.empty() ? "" : " --body " + scratch.write("body", row.body));
        const ToolRun run = kxsip(command, row.input);
        EXPECT_EQ(run.out.substr(0, row.start.size() + digest.size()), row.start + digest);
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.exit, 0);
        const std::string answered = request(run.out, row.body);
        EXPECT_EQ(kxsip("digest verify --user u" + password, answered).exit, 0);
        EXPECT_EQ(kxsip("digest verify --user u" + wrong, answered).exit, 1);
        EXPECT_EQ(kxsip("digest verify --user v" + password, answered).exit, 1);
        EXPECT_EQ(kxsip("digest verify --user u --method INVITE" + password, answered).exit, 1);
    }
    // the samples, and a password from standard input; made with openssl md5
    const std::string ida = "digest answer --user ida --password-file - --uri sip:example.com --qop auth"
                            " --cnonce 0a4f113b --number 1 ";
    EXPECT_EQ(kxsip(ida + sample("register_digest.sip"), "secret\n").out,
              "Authorization: Digest username=\"ida\",realm=\"example.com\",nonce=\"9f3c51d2a8e74b06b1c5d7e2f8a40913\","
              "response=\"8dd4426f633be2ae7dc96aaa1bba7dd8\",uri=\"sip:example.com\",algorithm=MD5,opaque=\"c7b01e\","
              "qop=\"auth\","
              "nc=00000001,cnonce=\"0a4f113b\"\r\n");
}

TEST(DigestCommandTest, WhatIsRefused) {
    struct Row {
        std::string command;
        std::string input;
        int exit;
        std::string why;
    };
    const std::string credentials = "Authorization: Digest username=u,response=x";
    const Row rows[] = {
        {"answer", request(""), 2, "KxException: Only a 401 or 407 can be answered"},
        {"answer", response(200, "WWW-Authenticate: " + kChallenge), 2,
         "KxException: Only a 401 or 407 can be answered"},
        {"answer", response(407, "WWW-Authenticate: " + kChallenge), 2, "KxException: The response has no challenge"},
        {"answer", response(401, "WWW-Authenticate: Digest realm=a\r\n"), 2,
         "KxException: Unsupported Algorithm: Only MD5 is supported !!!"},
        {"answer --qop auth-x --cnonce c", response(401, "WWW-Authenticate: " + kChallenge), 2,
         "KxException: The challenge does not offer this qop"},
        {"answer --uri nothing", response(401, "WWW-Authenticate: " + kChallenge), 2, "KxException: INVALID URI"},
        {"answer", "", 2, "KxSipParseError: SIP Method Token Expected"},
        {"verify", request(""), 2, "KxException: The request has no credentials"},
        {"verify", request("Authorization: Basic x\r\n"), 2, "KxException: The request has no credentials"},
        {"verify", response(200, ""), 2, "KxException: Only a request can be verified"},
        {"verify", request(credentials + "\r\n"), 2, "KxException: Unsupported Algorithm: Only MD5 is supported !!!"},
        {"verify", request(credentials + ",algorithm=MD5\r\n"), 1, ""},
    };
    const Scratch scratch;
    const std::string options = " --user u --password-file " + scratch.write("password", "sesame");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.command + row.why);
        const ToolRun run = kxsip("digest " + row.command + options, row.input);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, row.why.empty() ? "" : "kxsip: -, message 0: " + row.why + "\n");
        EXPECT_EQ(run.exit, row.exit);
    }
    EXPECT_EQ(kxsip("digest verify --number 1" + options, request("")).err, "kxsip: - has no message 1\n");
    EXPECT_EQ(kxsip("digest verify --user u --password-file /absent").exit, 3);
    EXPECT_EQ(kxsip("digest answer --body /absent" + options).exit, 3);
    const ToolRun both = kxsip("digest answer --user u --password-file - -", "sesame");
    EXPECT_EQ(both.exit, 64);
    EXPECT_THAT(both.err, testing::HasSubstr("only one of message, password and body can be read from standard input"));
    for (const char* const wrong : {"", " answer --user u", " answer --qop auth", " verify --user u --password p"}) {
        EXPECT_EQ(kxsip(std::string("digest") + wrong + (*wrong == '\0' ? "" : options)).exit, 64) << wrong;
    }
    // what can be read but not written is told, and does not stop the rest
    const ToolRun shown = kxsip("show --wire", request("Authorization: Digest username=u\r\n") + request(""));
    EXPECT_EQ(shown.exit, 2);
    EXPECT_EQ(shown.err, "kxsip: -, message 0: KxException: Unsupported Algorithm: Only MD5 is supported !!!\n");
    EXPECT_EQ(shown.out, request(""));
}
