#include "tests/tools/CaptureFile.h"

using Json = nlohmann::json;
using testing::HasSubstr;

/** A message, a millisecond after the one before it. */
struct Sent {
    std::string start;
    std::string callId;
    std::string cseq;
    bool isBack = false;
};

static std::string captureOf(const std::vector<Sent>& messages) {
    CaptureBytes capture;
    for (const Sent& sent : messages) {
        const std::string id = sent.callId.empty() ? "" : "Call-ID: " + sent.callId + "\r\n";
        const std::string text = sent.start +
                                 "\r\nVia: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bKa\r\nFrom: <sip:a@b>;tag=1\r\n" +
                                 "To: <sip:c@d>\r\n" + id + "CSeq: " + sent.cseq + "\r\n" + kNoBody;
        const auto [from, to] = sent.isBack ? std::pair("192.0.2.2", "192.0.2.1") : std::pair("192.0.2.1", "192.0.2.2");
        capture.add(datagram(text, from, to));
    }
    return capture.bytes();
}

static const std::string kInvite = "INVITE sip:c@d SIP/2.0";
static const std::string kBye = "BYE sip:c@d SIP/2.0";

/** Two calls: one answered, with a repetition and a re-INVITE that fails; the other refused. */
static std::string twoCalls() {
    return captureOf({{kInvite, "x", "1 INVITE"},
                      {kInvite, "x", "1 INVITE"},
                      {kInvite, "y", "1 INVITE"},
                      {"SIP/2.0 180 x", "x", "1 INVITE", true},
                      {"SIP/2.0 183 x", "x", "1 INVITE", true},
                      {"SIP/2.0 200 x", "x", "1 INVITE", true},
                      {"SIP/2.0 486 x", "y", "1 INVITE", true},
                      {"SIP/2.0 488 x", "x", "2 INVITE", true},
                      {kBye, "x", "3 BYE"},
                      {"SIP/2.0 200 x", "x", "3 BYE", true}});
}

TEST(CallsTest, LinesOfACapture) {
    const Scratch scratch;
    const std::string file = scratch.write("a.pcap", twoCalls());
    const std::string names =
        "number\tbegin\tfrom\tto\tmethod\tcode\tring\tanswer\tduration\trepeats\tmessages\tcall_id\n";
    const std::string x =
        "1\t1970-01-01T00:16:40.001000Z\tsip:a@b\tsip:c@d\tINVITE\t200\t0.003\t0.005\t0.003\t1\t8\tx\n";
    const std::string y = "2\t1970-01-01T00:16:40.003000Z\tsip:a@b\tsip:c@d\tINVITE\t486\t-\t-\t-\t0\t2\ty\n";
    EXPECT_EQ(kxsip("calls " + file), (ToolRun{0, names + x + y, ""}));
    for (const char* const sort : {"-code", "answer", "-answer", "messages", "-call_id"}) {
        const bool isYFirst = *sort != 'a' && std::string_view(sort) != "-answer";
        EXPECT_EQ(kxsip(std::string("calls --sort ") + sort + " " + file).out, names + (isYFirst ? y + x : x + y))
            << sort;
    }
    EXPECT_EQ(kxsip("calls --status 486 " + file).out, names + y) << "the number is that without filters";
    EXPECT_EQ(kxsip("calls --sort none " + file).exit, 64);
    EXPECT_EQ(kxsip("calls --sort number " + sample("call.sip")).exit, 3);

    const Json call = kxsip("calls --json --method BYE " + file).json().at(0);
    EXPECT_EQ(call, Json::parse(R"({"number":1,"begin":"1970-01-01T00:16:40.001000Z","from":"sip:a@b","to":"sip:c@d",)"
                                R"("method":"INVITE","code":200,"ring":0.003,"answer":0.005,"duration":0.003,)"
                                R"("repeats":1,"messages":8,"call_id":"x"})"));
    const Json none = kxsip("calls --json --call-id y " + file).json().at(0);
    EXPECT_TRUE(none["answer"].is_null());
}

TEST(CallsTest, WithoutCallIdAnAddressPairIsACall) {
    const std::string bytes = captureOf({{"OPTIONS sip:c@d SIP/2.0", "", "1 OPTIONS"},
                                         {kInvite, "x", "1 INVITE"},
                                         {"SIP/2.0 200 x", "", "1 OPTIONS", true}});
    const Scratch scratch;
    const std::string third =
        captureOf({{"OPTIONS sip:c@d SIP/2.0", "", "1 OPTIONS"}}).replace(24 + 16 + 12, 4, "\x0A\0\0\1", 4);
    const std::vector<Json> calls = kxsip("calls --json - " + scratch.write("a.pcap", third), bytes).json();
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0]["messages"], 2);
    EXPECT_TRUE(calls[0]["call_id"].is_null());
    EXPECT_TRUE(calls[1]["call_id"].is_null());
    EXPECT_EQ(calls[2]["call_id"], "x");
}

TEST(CallsTest, AreTheCallsOfFlowAndOfTheNewCapture) {
    const Scratch scratch;
    const std::string file = scratch.write("a.pcap", twoCalls());
    const std::string second = kxsip("flow --call-id y " + file).out;
    EXPECT_THAT(second, HasSubstr("486 x"));
    for (const char* const same : {"--call 2 ", "--status 486 ", "--text '^SIP/2.0 4.6' "}) {
        EXPECT_EQ(kxsip(std::string("flow ") + same + file).out, second) << same;
    }
    EXPECT_EQ(kxsip("flow --call 2 -", twoCalls()).out, second) << "which can't be read twice";
    EXPECT_EQ(kxsip("flow --call 3 " + file), (ToolRun{4, "", "kxsip: no call to draw\n"}));
    EXPECT_EQ(kxsip("flow --call 0 " + file).exit, 64);

    for (const std::string& source : {file, std::string("-")}) {
        const std::string copy = scratch.path("copy.pcap");
        EXPECT_EQ(kxsip("calls --status 486 -o " + copy + " " + source, twoCalls()).exit, 0);
        EXPECT_EQ(kxsip("flow " + copy).out, kxsip("flow --call 1 " + copy).out);
        EXPECT_EQ(kxsip("check -q " + copy).out.find("valid"), copy.size() + 3);
        EXPECT_EQ(kxsip("calls --json " + copy).json().at(0)["call_id"], "y");
    }
}

TEST(FilterTest, SelectsWhatItSays) {
    CaptureBytes capture;
    const auto request = [&capture](const std::string& uri, const std::string& more, const char* from) {
        const std::string text = sipMessage("OPTIONS " + uri + " SIP/2.0", "CSeq: 1 OPTIONS\r\n" + more);
        capture.add(datagram(text, from));
    };
    request("sip:one@d", "X-A: caf\xC3\xA9 \xFF\r\n", "192.0.2.1");
    request("sip:t%77o@d", "P-Asserted-Identity: <tel:+1-555-0100>\r\n", "10.1.2.3");
    Tins::IPv6 six = Tins::IPv6("2001:db8::1", "2001:db8::2") / Tins::UDP(5060, 5062) /
                     Tins::RawPDU(sipMessage("OPTIONS sip:six@d SIP/2.0", "CSeq: 1 OPTIONS\r\n"));
    capture.add(CaptureBytes::bytesOf(six));
    const std::string one = "sip:one@d";
    const std::string two = "sip:t%77o@d";
    const std::string all = one + " " + two + " sip:six@d";
    const std::pair<const char*, std::string> rows[] = {
        {"--user two", two},
        {"--user TWO", ""},
        {"--user +15550100", two},
        {"--user one,six", one + " sip:six@d"},
        {"--user a", all},
        {"--user b", ""},
        {"--text '^x-a: .*\\xff\\r$'", ""},
        {"--text '(?i)^x-a: caf\xC3\xA9 \\xff\\r$'", one},
        {"--text 'one@|six@'", one + " sip:six@d"},
        {"--text '(a*)*(a*)*(a*)*b@b'", ""},
        {"--address 10.0.0.0/8", two},
        {"--address 10.1.2.3/31", two},
        {"--address 10.1.2.2:40000", ""},
        {"--address 2001:DB8:0::1", "sip:six@d"},
        {"--address [2001:db8::1]:5060", "sip:six@d"},
        {"--address [2001:db8::2]:5060", ""},
        {"--address 2001:db8::/127,192.0.2.1", "sip:one@d sip:six@d"},
        {"--address 0.0.0.0/0", one + " " + two},
        {"--since 00:16:40", all},
        {"--until 00:16:40", all},
        {"--since 00:16:41", ""},
        {"--since 1970-01-01T00:16:40.002", two + " sip:six@d"},
        {"--until 1970-01-01T01:16:40.002+01:00", one + " " + two},
        {"--until '1970-01-01 00:16:40.001Z'", one},
        {"--since 00:16:40.003 --until 00:16:40.001", one + " sip:six@d"},
        {"--since 1970-01-02", ""},
        {"--until 1970-01-01", all},
    };
    const std::string bytes = capture.bytes();
    for (const auto& [options, expected] : rows) {
        const ToolRun run = kxsip(std::string("show --json ") + options + " -", bytes);
        EXPECT_EQ(found(run), expected) << options;
        EXPECT_EQ(run.exit, expected.empty() ? 4 : 0) << options;
        EXPECT_EQ(run.err, expected.empty() ? "kxsip: no message matches the filters\n" : "") << options;
    }
}

TEST(FilterTest, WhatCanMatchNothingIsAnError) {
    for (const char* const options :
         {"--method 'INV ITE'", "--address 10.0.0.0/33", "--address h", "--address 1.2.3.4:99999",
          "--address [1.2.3.4]", "--address [::1]x", "--address ::1/129", "--text '(a'", "--text 'a\\1'",
          "--since 2026-02-30", "--until 25:00:00", "--since 2026-11-21X13:00:00",
          "--since 2026-11-22 --until 2026-11-21", "--status 700"}) {
        EXPECT_EQ(kxsip(std::string("check ") + options + " " + sample("call.sip")).exit, 64) << options;
    }
    for (const char* const command : {"show", "check", "flow", "calls"}) {
        const std::string run = std::string(command) + " --call-id none ";
        const std::string file = sample("captures/call_udp.pcap");
        EXPECT_EQ(kxsip(run + file).exit, 4) << command;
        EXPECT_EQ(kxsip(run + file + " /none").exit, 3) << command;
    }
    const ToolRun text = kxsip("show --since 13:00:00 " + sample("call.sip"));
    EXPECT_EQ(text.exit, 3);
    EXPECT_THAT(text.err, HasSubstr("call.sip is no capture"));
}
