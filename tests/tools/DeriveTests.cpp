#include "tests/tools/ToolRun.h"

#include <algorithm>

const std::string kInvite = "INVITE sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 1 INVITE\r\n" + kNoBody;
const std::string kOptions = "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 2 OPTIONS\r\n" + kNoBody;
const std::string kOk = "SIP/2.0 200 OK\r\n" + kDialog + "CSeq: 1 INVITE\r\nContact: <sip:c@f>\r\n" + kNoBody;
const std::string kDropped = "OPTIONS sip:c@e SIP/2.0\r\nno colon\r\n" + kDialog + "CSeq: 3 OPTIONS\r\n" + kNoBody;
const std::string kOtherType =
    "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 2 OPTIONS\r\nAccept: a/b\r\nContent-Type: c/d\r\n" + kNoBody;
const std::string kNoCSeq = "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + kNoBody;

static std::string requestText(const std::string& start, const std::string& cseq) {
    return start + " SIP/2.0\r\nFrom: <sip:a@b>;tag=1\r\nTo: <sip:c@d>\r\nCall-ID: x@y\r\nCSeq: " + cseq + "\r\n";
}

TEST(KeyTest, IsALineAMessageAndStandsInTheJsonOfShow) {
    const std::string party = "cd5060ab50601192.0.2.15070z9hG4bKax@y";
    const std::string refused = "line 18: KxException: Unable to create transaction key for INVALID SIP Message\n";
    EXPECT_EQ(kxsip("key --grammar classic", kInvite + kOk + kOtherType + kNoCSeq + kDropped),
              (ToolRun{2, party + "1\n" + party + "1\n\n\n" + party + "3\n",
                       "kxsip: -, message 2, " + refused +
                           "kxsip: -, message 3, line 28: KxException: missing CSeq header\n"}));
    const std::vector<nlohmann::json> messages =
        kxsip("show --json --grammar classic", kInvite + kOtherType + kNoCSeq).json();
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0]["key"], party + "1");
    EXPECT_EQ(messages[1].value("key", nlohmann::json("absent")), nullptr);
    EXPECT_EQ(messages[2].value("key", nlohmann::json("absent")), nullptr);

    const Scratch scratch;
    const std::string file = scratch.write("one", kOptions);
    EXPECT_EQ(kxsip("key " + file + " - " + file, kDropped).out, party + "2\n" + party + "3\n" + party + "2\n");
    const ToolRun unreadable = kxsip("key " + scratch.path("absent") + " " + file);
    EXPECT_EQ(unreadable.exit, 3);
    EXPECT_EQ(unreadable.out, party + "2\n");
}

TEST(CheckTest, TellsEachMessageInALine) {
    const std::string noColon = "line 2, \"no colon\": SIP Header parse error : no colon found";
    const std::string otherCase = "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 2 options\r\n" + kNoBody;
    const std::string control = "FROB sip:b SIP/2.0\r\n" + kDialog + "CSeq: 2 \x1B\x7F\r\n\r\n";
    const std::pair<std::string, ToolRun> rows[] = {
        {kInvite + kOk, {0, "-\t0\tvalid\t\n-\t1\tvalid\t\n", "2 messages (RFC grammar): 2 valid\n"}},
        {kDropped + kOk,
         {1, "-\t0\tincomplete\ta header line could not be read: " + noColon + "\n-\t1\tvalid\t\n",
          "2 messages (RFC grammar): 1 valid, 1 incomplete\n"}},
        {otherCase,
         {2, "-\t0\tunusable\tthe CSeq method is not spelled as the request's\n",
          "1 message (RFC grammar): 1 unusable\n"}},
        {control, // control characters must not reach the terminal
         {2, "-\t0\trefused\tinvalid method in CSeq header (got=\"\\x1B\\x7F\" expected=\"FROB\"\n",
          "1 message (RFC grammar): 1 refused\n"}},
        {"", {2, "-\t0\trefused\tSIP Method Token Expected\n", "1 message (RFC grammar): 1 refused\n"}},
    };
    for (const auto& [input, run] : rows) {
        EXPECT_EQ(kxsip("check -", input), run);
    }
    EXPECT_EQ(kxsip("check --grammar classic -", kOtherType),
              (ToolRun{2, "-\t0\tunusable\tthe Accept header does not list the body's type\n",
                       "1 message (classic grammar): 1 unusable\n"}));
    EXPECT_EQ(kxsip("check -q -", kInvite).err, "");
    EXPECT_EQ(kxsip("check").exit, 64);
}

TEST(DeriveTest, PrintsTheMessage) {
    const std::string response = kDialog + "CSeq: 1 INVITE\r\n" + kNoBody;
    const std::string toCaller = "BYE sip:a@b SIP/2.0\r\nFrom: <sip:c@d>\r\nTo: <sip:a@b>;tag=1\r\nCall-ID: x@y\r\n";
    const std::string via = "Via: SIP/2.0/UDP 192.0.2.1:5070;branch=z9hG4bKa\r\n";
    const std::tuple<std::string, std::string, ToolRun> rows[] = {
        {"response 180 -", "\r\n" + kInvite + kOk, {0, "SIP/2.0 180 Ringing\r\n" + response, ""}},
        {"ack --number 1", kInvite + kOk, {0, requestText("ACK sip:c@f", "1 ACK") + kNoBody, ""}},
        {"bye", kOk, {0, requestText("BYE sip:c@f", "2 BYE") + kNoBody, ""}},
        {"bye", kInvite, {0, toCaller + "CSeq: 2 BYE\r\n" + kNoBody, ""}},
        {"cancel", kInvite, {0, requestText("CANCEL sip:c@e", "1 CANCEL") + via + kNoBody, ""}},
        {"prack", kOk, {0, requestText("PRACK sip:c@f", "2 PRACK") + kNoBody, ""}},

        {"response 99", kInvite, refusal("KxSipParseError: Invalid Response code")},
        {"response 200", kOk, refusal("KxException: A response is made from a request")},
        {"response 200", kNoCSeq, refusal("KxException: missing CSeq header")},
        {"ack", kInvite, refusal("KxException: An ACK is made from a response")},
        {"bye", kOptions, refusal("KxException: A BYE is made from an INVITE or a response")},
        {"cancel", kOk, refusal("KxException: A CANCEL is made from a request")},
        {"prack --number 1",
         kOk + kInvite,
         {2, "", "kxsip: -, message 1, line 10: KxException: A PRACK is made from a response\n"}},
        {"bye --number 2", kInvite + kOk, {3, "", "kxsip: - has no message 2\n"}},
        {"bye /absent", "", {3, "", "kxsip: cannot read /absent: No such file or directory\n"}},
        {"response 200", "INVITE sip:a SIP/2.0\r\nno colon\r\n" + response, {1, "SIP/2.0 200 OK\r\n" + response, ""}},
    };
    for (const auto& [command, input, run] : rows) {
        EXPECT_EQ(kxsip(command, input), run) << command;
    }
    for (const char* wrong : {"response", "ack --number -1", "response 200 a b"}) {
        EXPECT_EQ(kxsip(wrong).exit, 64) << wrong;
    }
}

TEST(ShowLogTest, PrintsTheLogForm) {
    const std::string body = "Content-Type: a/b\r\nContent-Length: 5\r\n\r\na\rb\r\n";
    const std::string text = "FROB sip:c SIP/2.0\r\n" + kDialog + "CSeq: 1 FROB\r\n";
    std::string expected = text + "Content-Type: a/b\r\nContent-Length: 5\r\n\r\n";
    expected.erase(std::remove(expected.begin(), expected.end(), '\r'), expected.end());
    EXPECT_EQ(kxsip("show --log", text + body + kNoCSeq),
              (ToolRun{2, "RECEIVED SIP MESSAGE (REQUEST) via UDP from :0 :\n" + expected + "a\rb\n\n",
                       "kxsip: -, message 1, line 11: KxException: missing CSeq header\n"}));
    EXPECT_EQ(kxsip("show --log --json").exit, 64);
}
