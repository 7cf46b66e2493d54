#include "tests/tools/CaptureFile.h"

#include <algorithm>
#include <functional>
#include <map>
#include <regex>

using testing::HasSubstr;

static std::ptrdiff_t count(const std::string& text, const std::string& part) {
    const std::regex pattern(part);
    return std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), {});
}

/** The number of the elements of each name in an XML document; if it is none, what is wrong with it. */
static std::map<std::string, int> elementsOf(const std::string& file) {
    const Scratch scratch;
    const std::string script = scratch.write("parse.py", R"(import sys, xml.etree.ElementTree as tree, collections
counts = collections.Counter()
try:
    for element in tree.parse(sys.argv[1]).iter():
        counts[element.tag.split("}")[-1]] += 1
except tree.ParseError as error:
    counts[str(error).replace(" ", "_")] = 1
for name, count in counts.items():
    print(name, count))");
    EXPECT_EQ(std::system(("python3 " + script + " " + file + " >" + scratch.path("out")).c_str()), 0);
    std::map<std::string, int> counts;
    std::istringstream lines(scratch.read("out"));
    for (std::string name; lines >> name;) {
        lines >> counts[name];
    }
    return counts;
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
    ASSERT_EQ(lines.size(), 11U) << run.out;
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
    const std::string markup = "</title></svg><script>alert('1')</script>&amp;\"]]>";
    const std::string evil = markup + "\x01\x1B\xFF\xC3\xA9\xED\xA0\x80\xC0\xAF\u202E";
    std::string request =
        sipMessage("OPTIONS sip:a&b@c SIP/2.0", "CSeq: 1 OPTIONS\r\nContent-Type: a/b\r\nX-A: " + evil + "\r\n", evil);
    std::string response = sipMessage("SIP/2.0 500 " + evil, "CSeq: 1 A<&>\r\nX-" + markup + ": x\r\n", evil);
    for (std::string* const message : {&request, &response}) {
        message->replace(message->find("x@y"), 3, "<b>&\"]]>\x02");
        message->replace(message->find("<sip:a@b>"), 9, "\"]]><&amp;\" <sip:a&'b@c>");
        message->replace(message->find("c@d"), 3, "c&'@d");
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
        EXPECT_THAT(
            picture,
            HasSubstr("&lt;script&gt;alert(&#39;1&#39;)&lt;/script&gt;&amp;amp;&quot;]]&gt;\\x01\\x1B\\xFF\xC3\xA9"
                      "\\xED\\xA0\\x80\\xC0\\xAF\\xE2\\x80\\xAE"));
        EXPECT_TRUE(std::ranges::all_of(picture, [](unsigned char c) { return c >= 0x20 || c == '\n'; }));
        EXPECT_EQ(picture.find("\u202E"), std::string::npos);
        EXPECT_EQ(count(picture, "class=\"step req again\""), 69);
        const bool isHtml = name == std::string_view("a.html");
        std::map<std::string, int> elements = elementsOf(scratch.path(name));
        EXPECT_EQ(elements["polygon"], 140 + 5) << testing::PrintToString(elements); // those of the legend
        EXPECT_EQ(elements["script"], 0);
        EXPECT_EQ(elements["title"], isHtml ? 1 : 1 + 140);
        EXPECT_EQ(elements[isHtml ? "details" : "use"], isHtml ? 140 : 4); // the names come again after 30 messages
    }
}

TEST(FlowTest, SizeIsLinearInTheAddresses) {
    CaptureBytes capture;
    for (int i = 0; i < 1000; ++i) {
        const std::string address = "10.0." + std::to_string(i / 250) + "." + std::to_string(i % 250);
        capture.add(datagram(sipOptions(i), "192.0.2.1", address.c_str()));
    }
    const Scratch scratch;
    for (const char* name : {"a.svg", "a.html"}) {
        EXPECT_EQ(kxsip("flow -o " + scratch.path(name) + " -", capture.bytes()).exit, 0);
        EXPECT_LT(scratch.read(name).size(), 1500U * 1000) << name;
    }
    EXPECT_THAT(kxsip("flow -", capture.bytes()).out,
                testing::EndsWith("\n   999      0.999   192.0.2.1:40000 > 10.0.3.249:5060  OPTIONS\n"));
}

TEST(FlowTest, FlawsAreMarkedWithTheirReasons) {
    const std::tuple<std::string, std::string, const char*, const char*> rows[] = {
        {"MESSAGE sip:c@d SIP/2.0", "CSeq: 1 MESSAGE\r\nContact: <sip:<\r\n", "MESSAGE (incomplete)",
         "incomplete: a header line could not be read: line 7, \"Contact: <sip:<\": "},
        {"MESSAGE sip:c@d SIP/2.0", "CSeq: 1 message\r\n", "MESSAGE (unusable)",
         "unusable: the CSeq method is not spelled as the request's"},
        {"SIP/2.0 200 x", "CSeq: x\r\n", "200 x (to , refused)", "refused: "},
    };
    const Scratch scratch;
    for (const auto& [start, more, label, why] : rows) {
        CaptureBytes capture;
        capture.add(datagram(sipMessage(start, more)));
        const std::string text = kxsip("flow -", capture.bytes()).out;
        EXPECT_THAT(text, testing::AllOf(HasSubstr(label), HasSubstr(std::string("     0 ") + why)));
        for (const char* name : {"a.svg", "a.html"}) {
            kxsip("flow -o " + scratch.path(name) + " -", capture.bytes());
            std::string picture = scratch.read(name);
            picture =
                std::regex_replace(std::regex_replace(picture, std::regex("&quot;"), "\""), std::regex("&lt;"), "<");
            EXPECT_THAT(std::regex_replace(picture, std::regex("&#39;"), "'"), HasSubstr(std::string(">") + why))
                << name;
        }
    }
}

TEST(FlowTest, TimesOfDay) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"elapsed", "1.204", "2026-11-21 13:22:21.935 UTC"},
        {"utc", "13:22:23.139", "2026-11-21 13:22:21.935 UTC"},
        {"local", "+1d 00:00:01.139", "2026-11-21 23:59:59.935 +1037"},
    };
    const Scratch scratch;
    setenv("TZ", "XXX-10:37:38", 1);
    setenv("LC_ALL", "C", 1);
    for (const auto& [which, time, date] : rows) {
        const std::string arguments =
            std::string("flow --time ") + which + " --call-id 1-5029@127.0.0.1 " + sample("captures/call_udp.pcap");
        EXPECT_THAT(kxsip(arguments).out, testing::AllOf(HasSubstr(time + std::string("   |")), HasSubstr(date)));
        for (const char* name : {"a.svg", "a.html"}) {
            kxsip(arguments + " -o " + scratch.path(name));
            EXPECT_THAT(scratch.read(name), testing::AllOf(HasSubstr(">" + std::string(time) + "<"), HasSubstr(date)));
        }
    }
    unsetenv("TZ");
    unsetenv("LC_ALL");
}

/** A call through so many hosts, of which this function tells the address. */
static std::string chainOf(int hosts, const std::function<std::string(int)>& address) {
    CaptureBytes capture;
    for (int i = 1; i < hosts; ++i) {
        const std::string request = sipMessage("INVITE sip:c@d SIP/2.0", "CSeq: 1 INVITE\r\n");
        const std::string response = sipMessage("SIP/2.0 183 Session Progress", "CSeq: 1 INVITE\r\nContact: <\r\n");
        for (const auto& [from, to, text] : {std::tuple(i - 1, i, request), std::tuple(i, i - 1, response)}) {
            Tins::IPv6 packet = Tins::IPv6(address(to), address(from)) / Tins::UDP(5060, 5060) / Tins::RawPDU(text);
            capture.add(CaptureBytes::bytesOf(packet));
        }
    }
    return capture.bytes();
}

TEST(FlowTest, LaddersFitTheWidth) {
    const auto network = [](int i) { return "2001:db8:" + std::to_string(i) + ":2222:3333:4444:5555:6666"; };
    const auto last = [](int i) { return "2001:db8:1111:2222:3333:4444:5555:" + std::to_string(i); };
    const std::tuple<int, std::function<std::string(int)>, int, std::size_t, const char*, const char*> rows[] = {
        {3, last, 80, 80, "2001:db8:...444:5555:1", "|<- ! 183 Session P... -|"},
        {3, network, 80, 80, "2001:db8:1...5555:6666", "|<- ! 183 Session P... -|"},
        {10, network, 80, 80, "J 2001:db8:9:2222:3333:4444:5555:6666", "|  |  |<-|  183 Session Progress (incomplete)"},
        {10, network, 20, 56, "J 2001:db8:9:2222...", " 1, 3, 5, 7, 9, 11,\n   13, 15, 17\n   incomplete: a"},
        {40, last, 100, 185, "AN 2001:", "|  INVITE\n"},
    };
    setenv("LC_ALL", "C", 1);
    for (const auto& [hosts, address, width, widest, name, line] : rows) {
        const std::string out = kxsip("flow --width " + std::to_string(width) + " -", chainOf(hosts, address)).out;
        EXPECT_THAT(out, testing::AllOf(HasSubstr(name), HasSubstr(line)));
        std::istringstream lines(out);
        std::size_t found = 0;
        for (std::string text; std::getline(lines, text);) {
            found = std::max(found, text.size());
        }
        EXPECT_LE(found, widest) << out;
        EXPECT_GE(found, widest - 4) << out;
    }
    unsetenv("LC_ALL");
    EXPECT_EQ(kxsip("flow --width 19 x").exit, 64);
}

TEST(FlowTest, WideAndCombiningCharactersKeepLifelinesInLine) {
    CaptureBytes capture;
    capture.add(datagram(sipMessage("INVITE sip:c@d SIP/2.0", "CSeq: 1 INVITE\r\n")));
    capture.add(datagram(sipMessage("SIP/2.0 486 \u8A71\u3057 e\u0301", "CSeq: 1 INVITE\r\n")));
    setenv("LC_ALL", "C", 1);
    const std::string out = kxsip("flow -", capture.bytes()).out;
    unsetenv("LC_ALL");
    EXPECT_THAT(out, HasSubstr("|------- INVITE ------->|\n"));
    EXPECT_THAT(out, HasSubstr("|----- 486 \u8A71\u3057 e\u0301 ----->|\n")); // ten columns wide
}

TEST(FlowTest, TitlesHaveIpv6Addresses) {
    std::string message = sipMessage("OPTIONS sip:c@d SIP/2.0", "CSeq: 1 OPTIONS\r\n");
    message.replace(message.find("<sip:a@b>"), 9, "\"<\\\"\" <sip:a@[2001:db8::1]:5062;x>")
        .replace(message.find("c@d>"), 3, "[::1]");
    for (const char* grammar : {"rfc", "classic"}) {
        CaptureBytes capture;
        capture.add(datagram(message));
        EXPECT_THAT(kxsip(std::string("flow - --grammar ") + grammar, capture.bytes()).out,
                    testing::StartsWith("OPTIONS sip:a@[2001:db8::1]:5062"))
            << grammar;
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

TEST(FlowTest, AFileIsWrittenWhollyOrNotAtAll) {
    const Scratch scratch;
    const std::string command = std::string(std::getenv("KXSIP")) + " flow -o " + scratch.write("a.html", "before") +
                                " " + sample("captures/call_udp.pcap") + " 2>" + scratch.path("err");
    EXPECT_NE(std::system(("trap '' XFSZ; ulimit -f 2; " + command).c_str()), 0);
    EXPECT_EQ(scratch.read("a.html"), "before");
    EXPECT_THAT(scratch.read("err"), HasSubstr("a.html: File too large"));
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_THAT(scratch.read("a.html"), testing::EndsWith("</html>\n"));
    const std::filesystem::directory_iterator files(scratch.path(""));
    EXPECT_EQ(std::distance(begin(files), end(files)), 2); // no other file is left
    std::filesystem::create_symlink("/dev/full", scratch.path("full.svg"));
    EXPECT_EQ(kxsip("flow -o " + scratch.path("full.svg") + " " + sample("captures/call_udp.pcap")).exit, 3);
}

TEST(FlowTest, PacketsOfTheCalls) {
    const Scratch scratch;
    const std::string file = sample("captures/call_udp.pcap");
    for (const char* name : {"a.pcap", "a.pcapng"}) {
        EXPECT_EQ(kxsip("flow --status 486 -o " + scratch.path(name) + " " + file).out, "");
        const std::string out = kxsip("flow " + scratch.path(name)).out;
        EXPECT_THAT(out, HasSubstr("5 messages in 0.711 s from 2026-11-21 13:22:25.307 UTC"));
        EXPECT_EQ(out.find("Call-ID", out.find("Call-ID") + 1), std::string::npos) << out;
    }
    EXPECT_EQ(kxsip("flow -o " + scratch.path("a.pcap") + " " + scratch.path("a.pcap")).exit, 3);
    EXPECT_THAT(kxsip("show " + scratch.path("a.pcap")).out, HasSubstr("INVITE"));
}
