#include "tests/tools/ToolRun.h"

using Json = nlohmann::json;

const std::string kRequest = "OPTIONS sip:c@d SIP/2.0\r\n" + kDialog + "CSeq: 1 OPTIONS\r\n";
const std::string kResponse = "SIP/2.0 200 All is well\r\n" + kDialog + "CSeq: 1 OPTIONS\r\n";

static std::string withBody(const std::string& body, std::size_t stated) {
    return "Content-Type: text/plain\r\nContent-Length: " + std::to_string(stated) + "\r\n\r\n" + body;
}

static std::string refused(const std::string& text, const std::string& className = "KxSipParseError") {
    return R"({"kind":null,"method":null,"uri":null,"code":null,"reason":null,"version":null,"status":null,)"
           R"("valid":false,"headers":[],"body_bytes":0,"error":{"class":")" +
           className + R"(","text":")" + text + R"("}})";
}

/** Checks the keys that `expected` names. */
static void expectFields(const Json& actual, const Json& expected) {
    for (const auto& [key, value] : expected.items()) {
        EXPECT_EQ(actual.value(key, Json("absent")), value) << key;
    }
}

TEST(ShowJsonTest, TellsEachMessageOfAFile) {
    const std::string request = R"({"kind":"request","method":"OPTIONS","uri":"sip:c@d","code":null,"reason":null,)"
                                R"("version":"2.0","status":0,"valid":true,"error":null,"body_bytes":0})";
    const std::string response = R"({"kind":"response","method":null,"uri":null,"code":200,)"
                                 R"("reason":"All is well","version":"2.0","status":0,"error":null})";
    const std::string cutShort = refused("message body is shorter than Content-Length");
    const std::string keepAlive = refused("Keep-alive datagram encountered", "KxSipParseKeepAliveException");
    const std::string noEnd =
        refused("Invalid Start-Line for SIP request: reached end of message looking for end-of-line");
    const std::string cut = withBody("abc\r\n" + kResponse + kNoBody, 9999);
    const std::string cutTwice = withBody("\nBYE sips:c@d SIP/3.0\n\nBYE sip:e SIP/2.0", 9999);
    const std::string notOne = "BYE sip:c@d\r\nSubject : on SIP/2.0\r\n" + withBody("v=0\r\n", 5);
    const std::string noCr = refused("Invalid Start-Line for SIP request: no CR before LF");
    const std::tuple<const char*, std::string, int, std::string> rows[] = {
        {"request, last of all, line ends after it", "\r\n" + kRequest + kNoBody + "\r\n\n", 0, request},
        {"body, next message at once", kRequest + withBody("abc", 3) + kResponse + kNoBody, 0,
         R"({"body_bytes":3,"index":0},)" + response},
        {"without Content-Length the rest is body", kRequest + "Content-Type: message/sip\r\n\r\n" + kResponse, 0,
         R"({"unread_bytes":0,"body_bytes":)" + std::to_string(kResponse.size()) + "}"},
        {"bytes after the body are the next message", kRequest + withBody("abcdef", 2), 2,
         R"({"body_bytes":2,"unread_bytes":4},)" + noEnd},
        {"a dropped line", "SIP/2.0 200 OK\r\nno colon \xFF\r\n" + kDialog + "CSeq: 1 BYE\r\n" + kNoBody, 1,
         R"({"status":1,"dropped":[{"line":2,"text":"no colon \uFFFD",)"
         R"("why":"SIP Header parse error : no colon found"}]})"},
        {"nothing but a keep-alive", "\r\n\r\n", 2, keepAlive},
        {"blank in front", " \r\n" + kRequest + kNoBody, 2, keepAlive + "," + request},
        {"headers and body of a refused message pass", notOne + kResponse + kNoBody, 2,
         refused("Invalid Start-Line for SIP request: does not contain 1 or 2 spaces") + "," + response},
        {"next one inside a body that is cut", kRequest + cut, 2, cutShort + "," + response},
        {"next one may be broken itself", kRequest + cutTwice, 2, cutShort + "," + noCr + "," + noEnd},
    };
    for (const auto& [name, input, exit, list] : rows) {
        SCOPED_TRACE(name);
        const ToolRun run = kxsip("show --json", input);
        EXPECT_EQ(run, (ToolRun{exit, run.out, ""}));
        const std::vector<Json> messages = run.json();
        const Json expected = Json::parse("[" + list + "]");
        ASSERT_EQ(messages.size(), expected.size()) << run.out;
        for (std::size_t i = 0; i < messages.size(); ++i) {
            expectFields(messages[i], expected[i]);
            expectFields(messages[i], {{"file", "-"}, {"index", i}});
        }
    }
}

TEST(ShowJsonTest, ListsHeaderValuesAsTheyAreWritten) {
    const std::string input = kRequest + "k: a,b\r\nX-A: 1, 2\r\nX-B: \xFF\xC3\xA9\r\nX-A: 3\r\nl: 0\r\n\r\n";
    std::string lines = "OPTIONS sip:c@d SIP/2.0\r\n";
    std::string classes;
    const Json message = kxsip("show --json -", input).json().at(0);
    for (const Json& header : message["headers"]) {
        lines += header["name"].get<std::string>() + ": " + header["value"].get<std::string>() + "\r\n";
        classes += header["id"].dump() + header["class"].get<std::string>() + " ";
    }
    std::string wire = kxsip("show --wire", input).out;
    EXPECT_EQ(lines + "\r\n", wire.replace(wire.find('\xFF'), 1, "\xEF\xBF\xBD"));
    EXPECT_THAT(classes, testing::HasSubstr("4KxSipCSeqHeader 53KxSipSupportedHeader 53KxSipSupportedHeader "
                                            "55KxSipUnknownHeader 55KxSipUnknownHeader 55KxSipUnknownHeader "));
}

TEST(ShowJsonTest, HasThePartsOfHeaders) {
    const std::string more =
        "CSeq: 1 OPTIONS\r\nVia: SIP/2.0/TCP [2001:db8::1]:5070;branch=z9hG4bKb;rport;x=\"y z\"\r\n"
        "m: \"B \\\"o\\\"\" <sip:b:p@h:5062;lr?Subject=s>;q=0.5\r\nContact: *\r\nRoute: <tel:+1-2;phone-context=e>\r\n"
        "Session-Expires: 90;refresher=uac\r\nReason: Q.850;cause=16;text=\"a b\"\r\nPrivacy: id;none\r\n"
        "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\nProxy-Authorization: Basic eDp5\r\n"
        "Alert-Info: bell\r\nRetry-After: 5 (busy);duration=6\r\nExpires: 7\r\nSubject: s\r\n";
    const std::pair<const char*, const char*> rows[] = {
        {"Via", R"({"transport":"TCP","host":"2001:db8::1","port":5070,"branch":"z9hG4bKb","rport":"",)"
                R"("parameters":{"x":"y z"}})"},
        {"CSeq", R"({"number":1,"method":"OPTIONS"})"},
        {"m", R"({"display_name":"B \"o\"","uri":"sip:b:p@h:5062;lr?Subject=s","scheme":"sip","user":"b","host":"h",)"
              R"("port":5062,"uri_parameters":{"lr":""},"uri_headers":{"Subject":"s"},"parameters":{"q":"0.5"}})"},
        {"Contact", R"({"wildcard":true})"},
        {"Route", R"({"uri":"tel:+1-2;phone-context=e","scheme":"tel","number":"+1-2",)"
                  R"("uri_parameters":{"phone-context":"e"}})"},
        {"Session-Expires", R"({"seconds":90,"parameters":{"refresher":"uac"}})"},
        {"Reason", R"({"protocol":"Q.850","parameters":{"cause":"16","text":"a b"}})"},
        {"Privacy", R"({"values":["id","none"]})"},
        {"WWW-Authenticate", R"({"scheme":"Digest","parameters":{"realm":"r","nonce":"n"}})"},
        {"Proxy-Authorization", R"({"scheme":"Basic"})"},
        {"Alert-Info", "{}"},
        {"Retry-After", R"({"seconds":5,"comment":"busy","parameters":{"duration":"6"}})"},
        {"Expires", R"({"seconds":7})"},
        {"Subject", "null"},
    };
    const Json message = kxsip("show --json", "OPTIONS sip:c@d SIP/2.0\r\n" + kDialog + more + kNoBody).json().at(0);
    for (const auto& [name, fields] : rows) {
        Json last;
        for (const Json& header : message["headers"]) {
            last = header["name"] == name ? header.value("fields", Json()) : last;
        }
        EXPECT_EQ(last, Json::parse(fields)) << name;
    }
}

TEST(ShowJsonTest, HasDialogAndBody) {
    const std::string response = "SIP/2.0 200 OK\r\n" + kDialog + "CSeq: 7 BYE\r\n";
    const std::pair<std::string, const char*> rows[] = {
        {withBody("v=\xC3\xA9\r\n", 6), R"({"body":"v=\u00E9\r\n","body_base64":null})"},
        {withBody("\xFB\xFF\xFE!", 4), R"({"body":null,"body_base64":"+//+IQ=="})"},
        {withBody(std::string(1, '\0'), 1), R"({"body":null,"body_base64":"AA=="})"},
        {kNoBody, R"({"body":null,"body_base64":null,"call_id":"x@y","from_tag":"1","to_tag":null,)"
                  R"("cseq":{"number":7,"method":"BYE"}})"},
    };
    for (const auto& [rest, fields] : rows) {
        expectFields(kxsip("show --json", response + rest).json().at(0), Json::parse(fields));
    }
}

/** The classic grammar computes a response that is missing. */
TEST(ShowTest, HeadersThatCannotBeWritten) {
    const std::string credentials = "Authorization: Digest username=\"u\", algorithm=SHA-256, realm=\"r\"\r\n";
    const std::string before = "OPTIONS sip:c@d SIP/2.0\r\n" + kDialog + "CSeq: 1 OPTIONS\r\n";
    const std::string text = before + credentials + "X-A: b\r\n" + kNoBody;
    const std::string why = "Unsupported Algorithm: Only MD5 is supported !!!";
    const Json header = kxsip("show --grammar classic --json", text).json().at(0)["headers"][5];
    EXPECT_TRUE(header["value"].is_null());
    EXPECT_EQ(header["error"], Json({{"class", "KxException"}, {"text", why}}));
    const ToolRun shown = kxsip("show --grammar classic", text);
    EXPECT_THAT(shown.out, testing::HasSubstr("can't be written, KxException: " + why + "\n    X-A"));
    EXPECT_EQ(shown.exit, 0);
}

TEST(ShowTest, ExitCodeIsTheWorstOfAllFiles) {
    EXPECT_EQ(kxsip("show " + sample("broken/header_without_colon.sip") + " " + sample("invite.sip")).exit, 1);

    const std::string refused = sample("broken/body_too_short.sip");
    const ToolRun whole = kxsip("show --wire " + sample("call.sip"));
    EXPECT_EQ(
        kxsip("show --wire " + refused + " -", whole.out),
        (ToolRun{2, whole.out,
                 "kxsip: " + refused + ", message 0: KxSipParseError: message body is shorter than Content-Length\n"}));

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
    const std::string text = kRequest + "X-A: \x1B[2J\x7F\xC2\x9B\xC3\xA9\x9B\xE2\x80\xAE\r\n";
    const std::string out = kxsip("show", text + kNoBody + text + "none\r\n" + kNoBody).out;
    for (const char* const part :
         {"\\x1B[2J\\x7F\\xC2\\x9B\xC3\xA9\\x9B\\xE2\\x80\\xAE\n", "verdict   not valid, status 1",
          "request   OPTIONS sip:c@d\n  verdict   valid, status 0\n"}) {
        EXPECT_THAT(out, testing::HasSubstr(part));
    }
}
