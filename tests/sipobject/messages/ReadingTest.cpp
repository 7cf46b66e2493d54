#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipReading.h"
#include "tests/sipobject/support/MessageSupport.h"

using namespace testing;

namespace {

const std::string kInfo = "INFO sip:h SIP/2.0\r\n";
const std::string kVia = "Via: SIP/2.0/UDP h\r\n";
const std::string kParties = "From: <sip:a@h>;tag=1\r\nTo: <sip:b@h>\r\nCall-ID: c\r\n";
const std::string kFive = kVia + kParties + "CSeq: 1 INFO\r\n";
const std::string kAckFive = kVia + kParties + "CSeq: 1 ACK\r\n";
const std::string kNoColon = "SIP Header parse error : no colon found";

/** "kind status @consumed; error at line:offset; line "dropped" why; usable -> status code", without empty parts. */
std::string summary(const KxSipReading& reading) {
    const char* const kinds[] = {"message ", "ping", "pong", "refused", "incomplete"};
    const char* const errors[] = {"none: ", "parse: ", "empty: ", "keep-alive: ", "other: "};
    std::string text = kinds[static_cast<int>(reading.kind)];
    text += (reading.message.isNil() ? "" : std::to_string(reading.message->getStatus())) + " @" +
            std::to_string(reading.consumed);
    if (reading.error != KxSipReading::Error::None) {
        EXPECT_EQ(reading.failure->getExceptionMessage(), reading.errorText);
        text += std::string("; ") + errors[static_cast<int>(reading.error)] + reading.errorText.c_str() + " at " +
                std::to_string(reading.errorLine) + ':' + std::to_string(reading.errorOffset);
    }
    for (const KxSipReading::DroppedLine& line : reading.dropped) {
        text += "; " + std::to_string(line.line) + " \"" + escaped(line.text) + "\" " + line.why();
    }
    return text + (reading.isUsable() ? "; usable" : "") + " -> " + std::to_string(reading.statusCode);
}

/** The status of the response and what it writes, without Content-Length; or "none". */
std::string answer(std::string_view text, int code = 0) {
    const HeapText bytes(text);
    const KxHandle<KxSipResponse> response = KxSipReading::sRead(bytes.view()).response(code, "new");
    if (response.isNil()) {
        return "none";
    }
    const std::string wire = written(*response);
    if (response->getStatus() == 0) {
        EXPECT_EQ(written(*readMessage(wire)), wire);
    }
    EXPECT_THAT(wire, EndsWith("\r\nContent-Length: 0\r\n\r\n"));
    return std::to_string(response->getStatus()) + ' ' + wire.substr(0, wire.size() - 23);
}

std::string longURI(std::size_t length) {
    return "INFO sip:" + std::string(length - 4, 'h') + " SIP/2.0\r\n" + kFive + "\r\n";
}

} // namespace

TEST(ReadingTest, TellsWhatTheBytesAre) {
    const std::string keepAlive = "; keep-alive: Keep-alive datagram encountered at 0:0 -> 0";
    const std::string typed = "Accept: a/b\r\nContent-Type: c/d\r\n\r\n";
    const std::string noEnd =
        "parse: Invalid Start-Line for SIP request: reached end of message looking for end-of-line";
    const std::pair<std::string, std::string> rows[] = {
        {"", "refused @0; parse: SIP Method Token Expected at 0:0 -> 0"},
        {"\r\n", "pong @2 -> 0"},
        {"\r\n\r\n", "ping @4 -> 0"},
        {"\r\n\r", "refused @3" + keepAlive},
        {"\r\n\r\n\r\n", "refused @6" + keepAlive},
        {" x", "refused @0" + keepAlive},
        {std::string("\r\n\0\0", 4), "refused @4" + keepAlive},
        // messages
        {kInfo + kFive + "\r\n", "message 0 @106; usable -> 0"},
        {"\r\n\r\n" + kInfo + kFive + "l: 0\r\n\r\nmore", "message 0 @116; usable -> 0"},
        {kInfo + kFive, "message 0 @104; usable -> 0"},
        {"SIP/2.0 200 OK\r\n" + kFive + "\r\n", "message 0 @102; usable -> 0"},
        {kInfo + kFive + typed, "message 2 @138 -> 400"},
        {"SIP/2.0 200 OK\r\n" + kFive + typed, "message 2 @134 -> 0"},
        {kInfo + kVia + kParties + "CSeq: 1 info\r\n\r\n", "message 0 @106 -> 400"},
        {kInfo + kFive + "Max-Forwards: 0\r\n\r\n", "message 0 @123 -> 483"},
        {longURI(1023), "message 0 @1124; usable -> 0"},
        {longURI(1024), "message 0 @1125 -> 414"},
        {"ACK sip:h SIP/2.0\r\n" + kAckFive + "Max-Forwards: 0\r\n\r\n", "message 0 @121; usable -> 0"},
        // messages without lines that were dropped
        {kInfo + "Expires: x\r\n y\r\n" + kFive + "Subject:\r\nbad\r\n: x\n\r\n",
         "message 1 @141; 9 \"Subject:\" SIP Header parse error : nothing after the colon; 10 \"bad\" " + kNoColon +
             "; 11 \": x\" Header token expected; usable -> 0"},
        {kInfo + "a\r\n b\r\n" + kFive + "c",
         "message 1 @112; 2 \"a\\r\\n b\" " + kNoColon + "; 9 \"c\" " + kNoColon + "; usable -> 0"},
        {kInfo + "bad\r\n" + kFive + "Max-Forwards: 0\r\n\r\n", "message 1 @128; 2 \"bad\" " + kNoColon + " -> 483"},
        {kInfo + "bad\r\n" + kVia + kParties + "\r\n", "message 1 @97; 2 \"bad\" " + kNoColon + " -> 400"},
        {kInfo + "bad\r\nTo: <sip:c@d>\r\n" + kFive, "message 1 @124; 2 \"bad\" " + kNoColon + " -> 400"},
        {kInfo + "bad\r\n" + kVia + kFive, "message 1 @129; 2 \"bad\" " + kNoColon + "; usable -> 0"},
        // refused
        {"\r\nINFO sips:h SIP/2.0\r\nbad\r\n" + kFive,
         "refused @23; parse: Unsupported Uri Scheme at 1:2; 2 \"bad\" " + kNoColon + " -> 416"},
        {"INFO sip:h SIP/2.1\r\n" + kFive, "refused @20; parse: Invalid SIP Version at 1:0 -> 505"},
        {"INFO sip:h SIP/2.00\r\n" + kFive, "refused @21; parse: Invalid SIP Version at 1:0 -> 505"},
        {"INFO sip:h?Require=a, SIP/2.0\r\n" + kFive,
         "refused @31; empty: SIP Header parse error : nothing after the colon at 1:0 -> 400"},
        {"ACK sips:h SIP/2.0\r\n" + kAckFive, "refused @20; parse: Unsupported Uri Scheme at 1:0 -> 0"},
        {"SIP/2-0 200 OK\r\n" + kFive + "bad\r\n", "refused @6; parse: '.' expected in response start line at 1:0; 7 "
                                                   "\"bad\" " +
                                                       kNoColon + " -> 0"},
        {"sip/2.0 200 OK\r\n" + kFive,
         "refused @16; parse: Invalid Start-Line for SIP request: does not contain 1 or 2 spaces at 1:0 -> 0"},
        {kInfo + kVia + "\r\n", "refused @42; other: missing From header at 0:0 -> 400"},
        // incomplete
        {kInfo + kVia, "incomplete @40; other: missing From header at 2:40 -> 400"},
        {kInfo + kFive + "l: 3\r\n\r\nab", "incomplete @112; parse: message body is shorter than Content-Length at "
                                           "9:114 -> 400"},
        {"\nINFO sip:h SIP/2.0", "incomplete @19; " + noEnd + " at 1:19 -> 400"},
        {"SIP/2.0 200", "incomplete @11; parse: unexpected end of response start line at 1:11 -> 0"},
    };
    for (const auto& [text, expected] : rows) {
        const HeapText bytes(text);
        const Balance balance;
        EXPECT_EQ(summary(KxSipReading::sRead(bytes.view())), expected) << escaped(text);
    }
    const std::string lines = std::string(200000, '\n') + kInfo + [] {
        std::string bad;
        for (int i = 0; i < 100000; ++i) {
            bad += "x\n";
        }
        return bad;
    }();
    const KxSipReading reading = KxSipReading::sRead(lines);
    ASSERT_EQ(reading.dropped.size(), 100000U);
    EXPECT_EQ(reading.dropped.back().line, 100001U);
}

TEST(ReadingTest, AgreesWithTheRoadThatThrows) {
    std::size_t count = 0;
    for (const char* folder : {"tests/messages", "tests/messages/torture", "samples", "samples/broken"}) {
        for (const std::filesystem::path& path : filesOf(folder, ".sip")) {
            const std::string file = fileText(path);
            const std::string text = file.substr(std::min(file.find_first_not_of("\r\n"), file.size()));
            KxByteArrayInputStream in{std::string_view(text)};
            const std::string expected = readDump(in);
            const KxSipReading reading = KxSipReading::sRead(text);
            EXPECT_EQ(reading.message.isNil() && !reading.failure.isNil()
                          ? className(*reading.failure) + ": " + reading.errorText.c_str()
                          : outcomeOf([&reading] { return dumpOf(*reading.message); }),
                      expected)
                << path;
            EXPECT_EQ(reading.consumed, text.size() - in.available()) << path;
            ++count;
        }
    }
    EXPECT_GT(count, 80U);
}

TEST(ReadingTest, AnswersWithWhatCanBeRead) {
    const std::string sips = "INFO sips:h SIP/2.0\r\n";
    const std::string bad416 = "SIP/2.0 416 Unsupported URI Scheme\r\n";
    const std::string from = "From: <sip:a@h>;tag=1\r\n";
    const std::string to = "To: <sip:b@h>;tag=new\r\n";
    const std::string rest = "Call-ID: c\r\nCSeq: 1 INFO";
    const std::string five = kVia + from + to + rest;
    std::string manyVia = "v:SIP/2.0/UDP h";
    for (int i = 0; i < 200; ++i) {
        manyVia += ",SIP/2.0/UDP h";
    }
    const std::tuple<std::string, int, std::string> rows[] = {
        {sips + kFive, 0, "0 " + bad416 + five},
        {sips + kFive, 499, "0 SIP/2.0 499 Unknown 400 Class Response\r\n" + five},
        {kInfo + kFive, 0, "none"},
        {kInfo + kFive, 503, "0 SIP/2.0 503 Service Unavailable\r\n" + five},
        {kInfo + kFive + "l: 3\r\n\r\nab", 0, "0 SIP/2.0 400 Bad Request\r\n" + five},
        {"\r\n" + sips + "From: <sip:a@h>;tag=1\r\nVia: SIP/2.0/UDP h,SIP/2.0/UDP i\r\n", 0,
         "1 " + bad416 + kVia + "Via: SIP/2.0/UDP i\r\nFrom: <sip:a@h>;tag=1"},
        {sips + kVia + "To: <sip:b@h>;tag=2\r\nTo: x\r\nCSeq: 1\r\n", 0, "1 " + bad416 + kVia + "To: <sip:b@h>;tag=2"},
        {"INFO sip:h?Via=SIP/2.0/UDP%20evil&Subject= SIP/2.0\r\n" + kFive, 0, "0 SIP/2.0 400 Bad Request\r\n" + five},
        // which Via was the first
        {sips + "Via: x\r\n" + kFive, 0, "none"},
        {sips + "bad\r\n" + kVia + "v: x\r\n" + kParties + "CSeq: 1 INFO\r\n", 0, "0 " + bad416 + five},
        {kInfo + "bad\r\nv: x\r\n" + kFive + "Max-Forwards: 0\r\n", 0, "none"},
        // nothing to answer
        {kInfo + kParties, 0, "none"},
        {"ACK sips:h SIP/2.0\r\n" + kAckFive, 400, "none"},
        {"SIP/2-0 200 OK\r\n" + kFive, 400, "none"},
        {"sip/2.0 200 OK\r\n" + kFive, 400, "none"},
        {"\r\n\r\n", 400, "none"},
        // what a stranger wrote
        {sips + "Via: SIP/2.0/UDP h;branch=\x1b[2J\r\n" + kParties, 0, "none"},
        {sips + kVia + "v: SIP/2.0/UDP h;x=\x07\r\nFrom: \"\x7f\" <sip:a@h>\r\nTo: \"\t\" <sip:b@h>\r\n" + rest, 0,
         "1 " + bad416 + kVia + "To: \"\t\" <sip:b@h>;tag=new\r\n" + rest},
        {sips + manyVia + "\r\n", 0, "none"},
    };
    for (const auto& [text, code, expected] : rows) {
        EXPECT_EQ(answer(text, code), expected) << escaped(text);
    }
    const std::string refused = sips + kFive;
    const KxSipReading reading = KxSipReading::sRead(refused);
    for (const int code : {99, 700}) {
        EXPECT_THAT(outcomeOf([&] { (void)reading.response(code); }), HasSubstr("Invalid Response code"));
    }
    EXPECT_THAT(outcomeOf([&] { (void)reading.response(0, "a\r\nb"); }), HasSubstr("KxSipParseError"));
    EXPECT_NE(reading.response()->getToHeader()->getTag(), "");
    EXPECT_EQ(reading.response()->getConnectionPort(), 0U);
    reading.salvaged->setConnectionTransport(KxSocketImpl::TCP);
    reading.salvaged->setConnectionPort(5062);
    EXPECT_EQ(reading.response()->getConnectionPort(), 5062U);
}

TEST(ReadingTest, TellsWhatWasSalvaged) {
    const std::string refused = "\nINVITE sips:h SIP/2.0\r\n" + kFive;
    const KxSipReading reading = KxSipReading::sRead(refused);
    EXPECT_NE(reading.salvaged->as<KxSipInviteMessage>(), nullptr);
    EXPECT_EQ(std::as_const(*reading.salvaged).as<KxSipResponse>(), nullptr);
    EXPECT_EQ(reading.salvaged->getStatus(), KX_STATUS_UNSUPPORTED_URI_SCHEME);
    EXPECT_EQ(reading.salvaged->as<KxSipRequest>()->getMethod(), std::string_view("INVITE"));
    EXPECT_EQ(reading.startLine().method, "INVITE");
    const std::pair<std::string, std::string> lines[] = {
        {"FOO  x", "FOO|0|"},
        {"SIP/2-0 486  Busy Here \r\nx", "|486|Busy Here"},
        {"sip/2.0 4x6 Busy", "|0|Busy"},
        {"SIP/2.0", "|0|"},
        {"", "|0|"},
    };
    for (const auto& [text, expected] : lines) {
        const KxSipStartLine line = KxSipStartLine::sRead(text);
        EXPECT_EQ(joined(line.method, line.code, line.reason), expected) << text;
    }
    const std::string bytes = "a b\nSubject : on SIP/2.0\nBYE x SIP/7.0\nSIP/2.0 2\n";
    EXPECT_EQ(KxSipStartLine::sFind(bytes), 25U);
    EXPECT_EQ(KxSipStartLine::sFind(bytes, 39), 39U);
    EXPECT_EQ(KxSipStartLine::sFind(bytes, 49), 49U);
}
