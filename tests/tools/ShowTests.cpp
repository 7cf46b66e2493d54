#include "tests/tools/ToolRun.h"

namespace {

using Json = nlohmann::json;

const std::string kDialog = "Via: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bKa\r\nFrom: <sip:a@b>;tag=1\r\nTo: <sip:c@d>\r\n"
                            "Call-ID: x@y\r\n";
const std::string kRequest = "OPTIONS sip:c@d SIP/2.0\r\n" + kDialog + "CSeq: 1 OPTIONS\r\n";
const std::string kResponse = "SIP/2.0 200 All is well\r\n" + kDialog + "CSeq: 1 OPTIONS\r\n";
const std::string kNoBody = "Content-Length: 0\r\n\r\n";

std::string withBody(const std::string& body, std::size_t told) {
    return "Content-Type: text/plain\r\nContent-Length: " + std::to_string(told) + "\r\n\r\n" + body;
}

std::string refused(const std::string& text, const std::string& className = "KxSipParseError") {
    return R"({"kind":null,"method":null,"uri":null,"code":null,"reason":null,"version":null,"status":null,)"
           R"("valid":false,"headers":[],"body_bytes":0,"error":{"class":")" +
           className + R"(","text":")" + text + R"("}})";
}

/** Checks the keys that `expected` names. */
void expectFields(const Json& actual, const Json& expected) {
    for (const auto& [key, value] : expected.items()) {
        EXPECT_EQ(actual.value(key, Json("absent")), value) << key;
    }
}

/** The values of one header name, "id class: value". */
std::vector<std::string> valuesOf(const Json& message, const std::string& name) {
    std::vector<std::string> values;
    for (const Json& header : message["headers"]) {
        if (header["name"] == name) {
            values.push_back(std::to_string(header["id"].get<int>()) + " " + header["class"].get<std::string>() + ": " +
                             header["value"].get<std::string>());
        }
    }
    return values;
}

using Texts = std::vector<std::string>;

} // namespace

TEST(ShowJsonTest, TellsEachMessageOfAFile) {
    const std::string request = R"({"kind":"request","method":"OPTIONS","uri":"sip:c@d","code":null,"reason":null,)"
                                R"("version":"2.0","status":0,"valid":true,"error":null,"body_bytes":0})";
    const std::string response = R"({"kind":"response","method":null,"uri":null,"code":200,)"
                                 R"("reason":"All is well","version":"2.0","status":0,"error":null})";
    const std::string short_ = refused("message body is shorter than Content-Length");
    const std::string keepAlive = refused("Keep-alive datagram encountered", "KxSipParseKeepAliveException");
    const std::string noEnd =
        refused("Invalid Start-Line for SIP request: reached end of message looking for end-of-line");
    struct Row {
        const char* name;
        std::string input;
        int exit;
        Texts messages;
    };
    const Row rows[] = {
        {"request, last of all, line ends behind it", "\r\n" + kRequest + kNoBody + "\r\n\n", 0, {request}},
        {"body, next message at once",
         kRequest + withBody("abc", 3) + kResponse + kNoBody,
         0,
         {R"({"body_bytes":3,"index":0})", response}},
        {"without Content-Length the rest is body",
         kRequest + "Content-Type: message/sip\r\n\r\n" + kResponse,
         0,
         {R"({"unread_bytes":0,"body_bytes":)" + std::to_string(kResponse.size()) + "}"}},
        {"header dropped", kRequest + "No colon\r\n" + kNoBody, 1, {R"({"status":1,"valid":false,"error":null})"}},
        {"Accept leaves the body's type out", kRequest + "Accept: a/b\r\n" + withBody("x", 1), 2, {R"({"status":2})"}},
        {"bytes behind the body are the next message",
         kRequest + withBody("abcdef", 2),
         2,
         {R"({"body_bytes":2,"unread_bytes":4})", noEnd}},
        {"nothing", "", 2, {refused("SIP Method Token Expected")}},
        {"nothing but a keep-alive", "\r\n\r\n", 2, {keepAlive}},
        {"blank in front", " \r\n" + kRequest + kNoBody, 2, {keepAlive, request}},
        {"headers and body of a refused message pass",
         "BYE sip:c@d\r\nSubject : on SIP/2.0\r\n" + withBody("v=0\r\n", 5) + kResponse + kNoBody,
         2,
         {refused("Invalid Start-Line for SIP request"), response}},
        {"next one inside a body that is cut",
         kRequest + withBody("abc\r\n" + kResponse + kNoBody, 9999),
         2,
         {short_, response}},
        {"next one may be broken itself",
         kRequest + withBody("\nBYE sips:c@d SIP/3.0\n\nBYE sip:e SIP/2.0", 9999),
         2,
         {short_, refused("Invalid Start-Line for SIP request: no CR before LF"), noEnd}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ToolRun run = kxsip("show --json", row.input);
        EXPECT_EQ(run.exit, row.exit);
        EXPECT_EQ(run.err, "");
        const std::vector<Json> messages = run.json();
        ASSERT_EQ(messages.size(), row.messages.size()) << run.out;
        for (std::size_t i = 0; i < messages.size(); ++i) {
            expectFields(messages[i], Json::parse(row.messages[i]));
            expectFields(messages[i], {{"file", "-"}, {"index", i}});
        }
    }
}

TEST(ShowJsonTest, ListsHeaderValuesAsTheyAreWritten) {
    const std::string input = kRequest + "k: a,b\r\nX-A: 1, 2\r\nX-B: \xFF\xC3\xA9\r\nX-A: 3\r\nl: 0\r\n\r\n";
    const ToolRun run = kxsip("show --json -", input);
    EXPECT_EQ(run.exit, 0);
    const Json message = run.json().at(0);
    EXPECT_EQ(valuesOf(message, "k"), Texts{"53 KxSipSupportedHeader: a"});
    EXPECT_EQ(valuesOf(message, "Supported"), Texts{"53 KxSipSupportedHeader: b"});
    EXPECT_EQ(valuesOf(message, "X-A"), (Texts{"55 KxSipUnknownHeader: 1, 2", "55 KxSipUnknownHeader: 3"}));
    EXPECT_EQ(valuesOf(message, "X-B"), Texts{"55 KxSipUnknownHeader: \xEF\xBF\xBD\xC3\xA9"});

    std::string lines = "OPTIONS sip:c@d SIP/2.0\r\n";
    for (const Json& header : message["headers"]) {
        lines += header["name"].get<std::string>() + ": " + header["value"].get<std::string>() + "\r\n";
    }
    std::string wire = kxsip("show --wire", input).out;
    EXPECT_EQ(lines + "\r\n", wire.replace(wire.find('\xFF'), 1, "\xEF\xBF\xBD"));
}

TEST(ShowWireTest, WrittenTextIsAFixedPoint) {
    for (const char* name : {"invite.sip", "carrier_invite.sip", "call.sip", "register_digest.sip"}) {
        SCOPED_TRACE(name);
        const ToolRun first = kxsip("show --wire " + sample(name));
        EXPECT_EQ(first.exit, 0);
        EXPECT_NE(first.out, "");
        EXPECT_EQ(kxsip("show --wire", first.out).out, first.out);
    }
}

TEST(ShowTest, ExitCodeIsTheWorstOfAllFiles) {
    const ToolRun dropped = kxsip("show " + sample("broken/header_without_colon.sip") + " " + sample("invite.sip"));
    EXPECT_EQ(dropped.exit, 1);
    EXPECT_NE(dropped.out.find("verdict   not valid, status 1"), std::string::npos) << dropped.out;

    const ToolRun refusal = kxsip("show --wire " + sample("broken/body_too_short.sip") + " " + sample("call.sip"));
    EXPECT_EQ(refusal.exit, 2);
    EXPECT_EQ(refusal.out, kxsip("show --wire " + sample("call.sip")).out);
    EXPECT_NE(refusal.err.find("body_too_short.sip, message 0: KxSipParseError: message body is shorter"),
              std::string::npos)
        << refusal.err;

    const Scratch scratch;
    const std::string absent = scratch.path("absent");
    const std::string folder = scratch.path("");
    const ToolRun unreadable = kxsip("show --json " + absent + " " + folder + " " + sample("broken/bad_version.sip"));
    EXPECT_EQ(unreadable.exit, 3);
    EXPECT_EQ(unreadable.err, "kxsip: cannot read " + absent + ": No such file or directory\nkxsip: cannot read " +
                                  folder + ": Is a directory\n");
    EXPECT_EQ(unreadable.json().size(), 1U);

    EXPECT_EQ(kxsip("show --json --wire").exit, 64);
}

TEST(ShowTextTest, ControlCharactersStayOffTheTerminal) {
    const ToolRun run = kxsip("show", kRequest + "X-A: \x1B[2J\x7F\xC2\x9B\xC3\xA9\r\n" + kNoBody);
    EXPECT_NE(run.out.find("\\x1B[2J\\x7F\xC2\\x9B\xC3\xA9\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("request   OPTIONS sip:c@d\n  verdict   valid, status 0\n"), std::string::npos) << run.out;
}
