#include "tests/tools/CaptureFile.h"

#include <algorithm>
#include <regex>

using testing::HasSubstr;

static std::ptrdiff_t count(const std::string& text, const std::string& part) {
    const std::regex pattern(part);
    return std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), {});
}

/** Removes elements from the innermost outwards; an element that is not closed in order remains. */
static std::string withoutElements(std::string text) {
    text = std::regex_replace(text, std::regex("<(!|meta)[^>]*>|<[^>]*/>"), "");
    for (std::size_t before = 0; text.size() != before;) {
        before = text.size();
        text = std::regex_replace(text, std::regex("<([a-z0-9]+)( [^<>]*)?>[^<>]*</\\1>"), "");
    }
    return text;
}

TEST(FlowTest, LadderOfText) {
    const std::string file = sample("captures/call_udp.pcap");
    const std::string busy = R"(INVITE sip:sipp@127.0.0.1:5061 > sip:service@127.0.0.1:5060  486 Busy Here
Call-ID 1-5101@127.0.0.1, 5 messages in 0.711 s from 2026-11-21 13:22:25.307 UTC

             127.0.0.1:5061                 127.0.0.1:5060
     6      0.000   |------- INVITE (SDP) -------->|
     7      0.503   |-- INVITE (SDP, repeats 6) -->|
     8      0.707   |<-------- 100 Trying ---------|
     9      0.708   |<------- 486 Busy Here -------|
    10      0.711   |------------ ACK ------------>|
)";
    setenv("LC_ALL", "C", 1);
    EXPECT_EQ(kxsip("flow --status 486 " + file).out, busy);
    const std::string whole = kxsip("flow " + file).out;
    EXPECT_TRUE(whole.ends_with("\n\n" + busy)) << whole;
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_THAT(kxsip("flow " + file).out, HasSubstr("\u2502\u25C0\u2500"));
    unsetenv("LC_ALL");
}

TEST(FlowTest, ColumnsAreHosts) {
    const std::string bye = sipMessage("BYE sip:c@d SIP/2.0", "CSeq: 1 BYE\r\n");
    const std::string refused =
        "SIP/2.0 500 " + std::string(100, 'x') + "\r\nCall-ID: x@y\r\nCSeq: 1 BYE\r\nl: 5\r\n\r\n";
    CaptureBytes capture;
    capture.add(datagram(bye, "192.0.2.1", "192.0.2.2")).add(datagram(bye, "192.0.2.2", "192.0.2.3"));
    capture.add(datagram(refused, "192.0.2.3", "192.0.2.1")).add(datagram(bye, "192.0.2.1", "192.0.2.2"));
    Tins::IP self = Tins::IP("192.0.2.2", "192.0.2.2") / Tins::UDP(7, 7) / Tins::RawPDU(bye);
    capture.add(CaptureBytes::bytesOf(self));
    setenv("LC_ALL", "C", 1);
    const ToolRun run = kxsip("flow -", capture.bytes());
    unsetenv("LC_ALL");
    EXPECT_EQ(run.exit, 2);
    std::vector<std::string> lines;
    std::istringstream text(run.out);
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), 10U) << run.out;
    EXPECT_THAT(lines[0], HasSubstr("500 xxx"));
    EXPECT_THAT(lines[3],
                testing::MatchesRegex(" *192.0.2.1 +192.0.2.2:5060 +192.0.2.2:40000 +192.0.2.3 +192.0.2.2:7"));
    EXPECT_THAT(lines[5], testing::MatchesRegex(" +0 +0.000   \\|-+ BYE -+>\\| +\\| +\\| +\\|"));
    EXPECT_THAT(lines[6], testing::MatchesRegex(" +1 +0.001   \\| +\\| +\\|-+ BYE -+>\\| +\\|"));
    EXPECT_THAT(lines[7], testing::MatchesRegex(" +2 +0.002   \\|<-+ 500 x+.* -+\\| +\\|"));
    EXPECT_THAT(lines[8], HasSubstr("- BYE (repeats 0) -"));
    EXPECT_THAT(lines[9], testing::EndsWith("| @ BYE"));
}

TEST(FlowTest, ResultIsTheFirstSuccessOrTheLastFailure) {
    const std::pair<std::vector<const char*>, const char*> rows[] = {
        {{"100", "401", "200", "481"}, "200 x"}, {{"401", "486", "180"}, "486 x"}, {{"180"}, "no final response"}};
    for (const auto& [codes, result] : rows) {
        CaptureBytes capture;
        capture.add(datagram(sipMessage("INVITE sip:c@d SIP/2.0", "CSeq: 1 INVITE\r\n")));
        for (const char* const code : codes) {
            capture.add(datagram(sipMessage(std::string("SIP/2.0 ") + code + " x", "CSeq: 1 INVITE\r\n")));
        }
        capture.add(datagram(sipMessage("SIP/2.0 200 y", "CSeq: 2 BYE\r\n")));
        EXPECT_THAT(kxsip("flow -", capture.bytes()).out,
                    testing::StartsWith(std::string("INVITE sip:a@b > sip:c@d  ") + result + "\n"));
    }
}

TEST(FlowTest, PicturesHoldWhateverTheMessageHolds) {
    const std::string evil =
        "</title></svg><script>alert('1')</script>&amp;\"]]>\x01\x1B\xFF\xC3\xA9\xED\xA0\x80\xC0\xAF";
    std::string request = sipMessage("OPTIONS sip:a@b SIP/2.0", "CSeq: 1 OPTIONS\r\nX-A: " + evil + "\r\n");
    std::string response = sipMessage("SIP/2.0 500 " + evil, "CSeq: 1 OPTIONS\r\n");
    for (std::string* const message : {&request, &response}) {
        message->replace(message->find("x@y"), 3, "<b>&\x02");
    }
    CaptureBytes capture;
    for (int i = 0; i < 70; ++i) {
        capture.add(datagram(request)).add(datagram(response, "192.0.2.2", "192.0.2.1"));
    }
    const Scratch scratch;
    for (const char* name : {"a.svg", "a.html"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(kxsip("flow -o " + scratch.path(name) + " -", capture.bytes()).out, "");
        const std::string picture = scratch.read(name);
        EXPECT_EQ(withoutElements(picture).find('<'), std::string::npos);
        EXPECT_EQ(count(picture, "<script"), 0);
        EXPECT_THAT(
            picture,
            HasSubstr("&lt;script&gt;alert(&#39;1&#39;)&lt;/script&gt;&amp;amp;&quot;]]&gt;\\x01\\x1B\\xFF\xC3\xA9"
                      "\\xED\\xA0\\x80\\xC0\\xAF"));
        EXPECT_TRUE(std::ranges::all_of(picture, [](unsigned char c) { return c >= 0x20 || c == '\n'; }));
        EXPECT_EQ(count(picture, "<polygon"), 140 + 5); // those of the legend
        EXPECT_EQ(count(picture, "class=\"step req again\""), 69);
        EXPECT_EQ(count(picture, "class=\"step bad\""), 1);
        const bool isHtml = name == std::string_view("a.html");
        EXPECT_EQ(count(picture, isHtml ? "<details" : ">192.0.2.1<"), isHtml ? 140 : 5); // once per thirty messages
    }
}

TEST(FlowTest, SaysWhatItCannotDraw) {
    const Scratch scratch;
    const std::string file = sample("captures/call_udp.pcap");
    const std::string none = scratch.path("none/a.svg");
    EXPECT_EQ(kxsip("flow -o ladder.png " + file).exit, 64);
    EXPECT_EQ(kxsip("flow -o " + none + " " + file).exit, 3);
    EXPECT_THAT(kxsip("flow -o " + none + " " + file).err, HasSubstr("none/a.svg: No such file or directory"));
    EXPECT_EQ(kxsip("flow " + sample("call.sip")).exit, 3);
    EXPECT_THAT(kxsip("flow " + sample("call.sip")).err, HasSubstr("call.sip is no capture"));
    EXPECT_EQ(kxsip("flow --method REFER -o " + scratch.path("a.svg") + " " + file),
              (ToolRun{4, "", "kxsip: no call to draw\n"}));
    EXPECT_FALSE(std::filesystem::exists(scratch.path("a.svg")));
}
