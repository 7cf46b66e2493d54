#include "tests/tools/ToolRun.h"

#include <algorithm>

namespace {

const std::string kDialog = "Via: SIP/2.0/UDP 192.0.2.1:5070;branch=z9hG4bKa\r\nFrom: <sip:a@b>;tag=1\r\n"
                            "To: <sip:c@d>\r\nCall-ID: x@y\r\n";
const std::string kNoBody = "Content-Length: 0\r\n\r\n";
const std::string kInvite = "INVITE sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 1 INVITE\r\n" + kNoBody;
const std::string kOptions = "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 2 OPTIONS\r\n" + kNoBody;
const std::string kOk = "SIP/2.0 200 OK\r\n" + kDialog + "CSeq: 1 INVITE\r\nContact: <sip:c@f>\r\n" + kNoBody;
const std::string kDropped = "OPTIONS sip:c@e SIP/2.0\r\nno colon\r\n" + kDialog + kNoBody;
const std::string kOtherType =
    "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 2 OPTIONS\r\nAccept: a/b\r\nContent-Type: c/d\r\n" + kNoBody;
const std::string kNoCSeq = "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + kNoBody;
const std::string kOtherCase = "OPTIONS sip:c@e SIP/2.0\r\n" + kDialog + "CSeq: 2 options\r\n" + kNoBody;

std::string requestText(const std::string& start, const std::string& cseq) {
    return start + " SIP/2.0\r\nFrom: <sip:a@b>;tag=1\r\nTo: <sip:c@d>\r\nCall-ID: x@y\r\nCSeq: " + cseq + "\r\n";
}

} // namespace

TEST(KeyTest, IsALineAMessage) {
    const std::string party = "cd5060ab50601192.0.2.15070z9hG4bKax@y";
    const ToolRun run = kxsip("key", kInvite + kOk + kOtherType + kOptions + kNoCSeq + kDropped);
    EXPECT_EQ(run.out, party + "1\n" + party + "1\n\n" + party + "2\n\n" + party + "\n");
    EXPECT_EQ(run.err,
              "kxsip: -, message 2, line 18: KxException: Unable to create transaction key for INVALID SIP Message\n"
              "kxsip: -, message 4, line 36: KxException: missing CSeq header\n");
    EXPECT_EQ(run.exit, 2);

    const Scratch scratch;
    const std::string file = scratch.write("one", kOptions);
    EXPECT_EQ(kxsip("key " + file + " - " + file, kDropped).out, party + "2\n" + party + "\n" + party + "2\n");
    const ToolRun unreadable = kxsip("key " + file + " " + scratch.path("absent"));
    EXPECT_EQ(unreadable.exit, 3);
    EXPECT_EQ(unreadable.out, party + "2\n");
}

TEST(KeyTest, StandsInTheJsonOfShow) {
    const std::vector<nlohmann::json> messages = kxsip("show --json", kInvite + kOtherType + kNoCSeq).json();
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0]["key"], "cd5060ab50601192.0.2.15070z9hG4bKax@y1");
    EXPECT_EQ(messages[1].value("key", nlohmann::json("absent")), nullptr);
    EXPECT_EQ(messages[2].value("key", nlohmann::json("absent")), nullptr);
}

TEST(CheckTest, TellsEachMessageInALine) {
    struct Row {
        const char* name;
        std::string input;
        int exit;
        std::string out;
        std::string count;
    };
    const std::string noColon = "\"no colon\": SIP Header parse error : no colon found";
    const Row rows[] = {
        {"valid", kInvite + kOk, 0, "-\t0\tvalid\t\n-\t1\tvalid\t\n", "2 messages: 2 valid"},
        {"dropped", kDropped + kOk, 1,
         "-\t0\tincomplete\ta header line could not be read: line 2, " + noColon + "\n-\t1\tvalid\t\n",
         "2 messages: 1 valid, 1 incomplete"},
        {"Accept", kOtherType, 2, "-\t0\tunusable\tthe Accept header does not list the body's type\n",
         "1 message: 1 unusable"},
        {"letter case", kOtherCase, 2, "-\t0\tunusable\tthe CSeq method is not spelled as the request's\n",
         "1 message: 1 unusable"},
        {"refused", kNoCSeq + kOk, 2, "-\t0\trefused\tmissing CSeq header\n-\t1\tvalid\t\n",
         "2 messages: 1 valid, 1 refused"},
        {"control characters stay off the terminal", "FROB sip:b SIP/2.0\r\n" + kDialog + "CSeq: 2 \x1B\x7F\r\n\r\n", 2,
         "-\t0\trefused\tinvalid method in CSeq header (got=\"\\x1B\\x7F\" expected=\"FROB\"\n",
         "1 message: 1 refused"},
        {"nothing", "", 2, "-\t0\trefused\tSIP Method Token Expected\n", "1 message: 1 refused"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ToolRun run = kxsip("check -", row.input);
        EXPECT_EQ(run.out, row.out);
        EXPECT_EQ(run.err, row.count + "\n");
        EXPECT_EQ(run.exit, row.exit);
    }
    EXPECT_EQ(kxsip("check -q -", kInvite).err, "");
    EXPECT_EQ(kxsip("check " + sample("invite.sip") + " " + sample("call.sip").insert(0, "x")).exit, 3);
    EXPECT_EQ(kxsip("check").exit, 64);
}

TEST(DeriveTest, PrintsTheMessage) {
    struct Row {
        std::string command;
        std::string input;
        int exit;
        std::string out;
        std::string err;
    };
    const std::string response = kDialog + "CSeq: 1 INVITE\r\n" + kNoBody;
    const Row rows[] = {
        {"response 486", kInvite, 0, "SIP/2.0 486 Busy Here\r\n" + response, ""},
        {"response 180 -", "\r\n" + kInvite + kOk, 0, "SIP/2.0 180 Ringing\r\n" + response, ""},
        {"ack", kOk, 0, requestText("ACK sip:c@f", "1 ACK") + kNoBody, ""},
        {"ack --number 1", kInvite + kOk, 0, requestText("ACK sip:c@f", "1 ACK") + kNoBody, ""},
        {"bye", kOk, 0, requestText("BYE sip:c@f", "2 BYE") + kNoBody, ""},
        {"bye", kInvite, 0,
         "BYE sip:a@b SIP/2.0\r\nFrom: <sip:c@d>\r\nTo: <sip:a@b>;tag=1\r\nCall-ID: x@y\r\nCSeq: 2 BYE\r\n" + kNoBody,
         ""},
        {"cancel", kInvite, 0,
         requestText("CANCEL sip:c@e", "1 CANCEL") + "Via: SIP/2.0/UDP 192.0.2.1:5070;branch=z9hG4bKa\r\n" + kNoBody,
         ""},
        {"prack", kOk, 0, requestText("PRACK sip:c@f", "2 PRACK") + kNoBody, ""},

        {"response 99", kInvite, 2, "", "-, message 0: KxSipParseError: Invalid Response code"},
        {"response 200", kOk, 2, "", "-, message 0: KxException: A response is made from a request"},
        {"response 200", kDropped, 2, "", "-, message 0: KxException: missing CSeq header"},
        {"response 200", kNoCSeq, 2, "", "-, message 0: KxException: missing CSeq header"},
        {"ack", kInvite, 2, "", "-, message 0: KxException: An ACK is made from a response"},
        {"bye", kOptions, 2, "", "-, message 0: KxException: A BYE is made from an INVITE or a response"},
        {"cancel", kOk, 2, "", "-, message 0: KxException: A CANCEL is made from a request"},
        {"prack --number 1", kOk + kInvite, 2, "",
         "-, message 1, line 10: KxException: A PRACK is made from a response"},
        {"bye --number 2", kInvite + kOk, 3, "", "- has no message 2"},
        {"bye /absent", "", 3, "", "cannot read /absent: No such file or directory"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.command);
        const ToolRun run = kxsip(row.command, row.input);
        EXPECT_EQ(run.out, row.out);
        EXPECT_EQ(run.err, row.err.empty() ? "" : "kxsip: " + row.err + "\n");
        EXPECT_EQ(run.exit, row.exit);
    }
    for (const char* wrong : {"response", "response x", "ack --number -1", "response 200 a b"}) {
        EXPECT_EQ(kxsip(wrong).exit, 64) << wrong;
    }
    const ToolRun dropped =
        kxsip("response 200", "BYE sip:a SIP/2.0\r\nno colon\r\n" + kDialog + "CSeq: 1 BYE\r\n\r\n");
    EXPECT_EQ(dropped.exit, 1);
    EXPECT_EQ(dropped.out, "SIP/2.0 200 Ok\r\n" + kDialog + "CSeq: 1 BYE\r\n" + kNoBody);
}

TEST(ShowLogTest, PrintsTheLogForm) {
    const std::string body = "Content-Type: a/b\r\nContent-Length: 5\r\n\r\na\rb\r\n";
    const std::string text = "FROB sip:c SIP/2.0\r\n" + kDialog + "CSeq: 1 FROB\r\n";
    const ToolRun run = kxsip("show --log", text + body + kNoCSeq);
    std::string expected = text + "Content-Type: a/b\r\nContent-Length: 5\r\n\r\n";
    expected.erase(std::remove(expected.begin(), expected.end(), '\r'), expected.end());
    EXPECT_EQ(run.out, "RECEIVED SIP MESSAGE (REQUEST) via UDP from :0 :\n" + expected + "a\rb\n\n");
    EXPECT_EQ(run.err, "kxsip: -, message 1, line 11: KxException: missing CSeq header\n");
    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(kxsip("show --log --json").exit, 64);
}
