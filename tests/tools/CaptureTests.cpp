#include "tests/tools/CaptureFile.h"

namespace {

using namespace requests;
using namespace std::string_literals;
using testing::HasSubstr;

Tins::IP acknowledgement(std::uint32_t number) {
    Tins::TCP tcp(40000, 5060);
    tcp.flags(Tins::TCP::ACK);
    tcp.ack_seq(number);
    return Tins::IP("192.0.2.1", "192.0.2.2") / tcp;
}

} // namespace

TEST(CaptureTest, SamplesOfRealCalls) {
    const std::vector<nlohmann::json> udp = kxsip("show --json " + sample("captures/call_udp.pcap")).json();
    ASSERT_EQ(udp.size(), 11U);
    EXPECT_EQ(udp[9]["time"], "2026-11-21T13:22:26.015423Z");
    EXPECT_EQ(udp[9]["transport"], "UDP");
    EXPECT_EQ(udp[9]["destination"], nlohmann::json::parse(R"({"address":"127.0.0.1","port":5061})"));
    const ToolRun tcp = kxsip("check - ", kxsip("show --wire " + sample("captures/call_tcp.pcap")).out);
    EXPECT_EQ(tcp.err, "12 messages (RFC grammar): 12 valid\n");
}

TEST(CaptureTest, EveryKindOfLink) {
    Tins::IP packet4 = datagram(kOne);
    const std::string v4 = CaptureBytes::bytesOf(packet4);
    Tins::IPv6 packet = Tins::IPv6("2001:db8::2", "2001:db8::1") / Tins::UDP(5060, 40000) / Tins::RawPDU(kTwo);
    const std::string v6 = CaptureBytes::bytesOf(packet);
    const std::string ethernet(12, '\1');
    const std::tuple<const char*, int, std::string, std::string> rows[] = {
        {"Ethernet", 1, ethernet + "\x08\0"s, ethernet + "\x86\xDD"s},
        {"VLAN", 1, ethernet + "\x81\0\0\x05\x08\0"s, ethernet + "\x88\xA8\0\x05\x81\0\0\xFF\x86\xDD"s},
        {"cooked", 113, std::string(14, '\0') + "\x08\0"s, std::string(14, '\0') + "\x86\xDD"s},
        {"cooked 2", 276, "\x08\0"s + std::string(18, '\0'), "\x86\xDD"s + std::string(18, '\0')},
        {"loopback, of some BSD", 0, "\x02\0\0\0"s, "\x1E\0\0\0"s},
        {"raw", 101, "", ""},
    };
    for (const auto& [name, type, header4, header6] : rows) {
        for (const bool isNext : {false, true}) {
            SCOPED_TRACE(name);
            CaptureBytes capture(type, isNext);
            const ToolRun run = showAll(capture.add(header4 + v4).add(header6 + v6).bytes());
            EXPECT_EQ(found(run), "sip:1@d sip:2@d") << run.err;
            EXPECT_EQ(run.json().at(1)["source"]["address"], "2001:db8::1");
            EXPECT_EQ(run.exit, 0);
        }
    }
    EXPECT_EQ(showAll(CaptureBytes(105).bytes()).exit, 3);
}

TEST(CaptureTest, FragmentsAreJoined) {
    const std::vector<std::string> one = fragments(datagram(kOne));
    const std::vector<std::string> back = fragments(datagram(kTwo, "192.0.2.2", "192.0.2.1"));
    const std::tuple<std::vector<std::string>, std::string, std::string> rows[] = {
        {{one[2], one[2], one[1], one[0]}, "sip:1@d", ""},
        {{one[0], back[0], one[1], back[1], back[2], one[2]}, "sip:2@d sip:1@d", ""}, // both have one number
        {{one[0], one[2], back[0], back[1], back[2]}, "sip:2@d", "kxsip: -: 1 IP datagram lacks fragments\n"},
    };
    for (const auto& [frames, expected, note] : rows) {
        CaptureBytes capture;
        for (const std::string& frame : frames) {
            capture.add(frame);
        }
        const ToolRun run = showAll(capture.bytes());
        EXPECT_EQ(found(run), expected);
        EXPECT_EQ(run.err, note);
    }

    Tins::UDP udp(5060, 40000);
    udp /= Tins::RawPDU(kOne);
    const std::string whole = CaptureBytes::bytesOf(udp);
    CaptureBytes v6;
    for (const bool isSecond : {true, false}) {
        const std::string part = isSecond ? whole.substr(80) : whole.substr(0, 80);
        std::string header = "\x60\0\0\0\0\0\x2C\x40"s + std::string(31, '\0') + '\1';
        put16(header, 4, part.size() + 8);
        v6.add(header + (isSecond ? "\x11\0\0\x50\0\0\0\x09"s : "\x11\0\0\x01\0\0\0\x09"s) + part);
    }
    EXPECT_EQ(found(showAll(v6.bytes())), "sip:1@d");
}

TEST(CaptureTest, StreamsAreCutIntoMessages) {
    struct Row {
        const char* name;
        std::vector<Piece> pieces;
        std::string found;
        std::string note = {};
    };
    const std::string both = kOne + kBody + kTwo;
    const std::size_t inBody = kOne.size() + kBody.size() - 4;
    std::vector<Piece> bytes;
    for (std::size_t i = 0; i < both.size(); ++i) {
        bytes.push_back({i, both.substr(i, 1)});
    }
    const std::string all = "sip:1@d sip:3@d sip:2@d";
    const std::string gap = "kxsip: -: 1 gap in a TCP stream, what it cuts off is read as far as it is there\n";
    const std::string endless = "OPTIONS sip:9@d SIP/2.0\r\nContent-Length: 18446744073709551615\r\n\r\n";
    const Piece syn{~std::size_t{0}, "", Tins::TCP::SYN};
    const auto from = [&both](std::size_t begin, std::size_t count = SIZE_MAX) {
        return Piece{begin, both.substr(begin, count)};
    };
    const std::string cut = kBody.substr(0, kBody.size() - 4);
    const Row rows[] = {
        {"a byte a segment", bytes, all},
        {"out of order, overlapping", {syn, from(inBody), from(0, 50), from(10, 90), from(20, inBody - 10)}, all},
        {"line ends and other things between", {{0, "\r\n\r\nGET / HTTP/1.1\r\nHost: a\r\n\r\n\r\n" + both}}, all},
        {"captured from the middle on", {{900, both.substr(100)}}, "sip:3@d sip:2@d"},
        {"one is lost before a message", {syn, {0, kOne}, {400, kTwo}}, "sip:1@d sip:2@d", gap},
        {"a lost one cuts a message off", {syn, {0, kOne + cut}, {600, kTwo}}, "sip:1@d ! sip:2@d", gap},
        {"the stream ends in a message", {syn, {0, cut}, {999, "", Tins::TCP::RST}}, "!"},
        {"the same ports again", {syn, {0, kOne}, {999999, "", syn.flags}, {1000000, kTwo}}, "sip:1@d sip:2@d"},
        {"a length that nobody can wait for", {{0, endless}, {endless.size(), kOne}}, "! sip:1@d"},
    };
    for (const Row& row : rows) {
        for (const std::uint32_t first : {1U, ~0U - 60U}) { // the second number wraps around within the stream
            SCOPED_TRACE(row.name);
            CaptureBytes capture;
            for (const Piece& piece : row.pieces) {
                capture.add(segment(piece, first));
            }
            const ToolRun run = showAll(capture.bytes());
            EXPECT_EQ(found(run), row.found);
            EXPECT_EQ(run.err, row.note);
        }
    }
    // the tool does not wait for a lost segment that is acknowledged; the time after the gap is approximate
    CaptureBytes acknowledged;
    acknowledged.add(segment({0, kOne}, 1)).add(segment({999, kTwo}, 1)).add(acknowledgement(1001));
    acknowledged.add(acknowledgement(1001)).add(datagram(kBody));
    const ToolRun run = showAll(acknowledged.bytes());
    EXPECT_EQ(found(run), "sip:1@d sip:2@d sip:3@d");
    EXPECT_EQ(run.json().at(1)["time"], "1970-01-01T00:16:40.003000Z");
}

TEST(CaptureTest, WhatIsNoSipAndWhatIsBroken) {
    const std::string good = CaptureBytes().add(datagram(kOne)).bytes();
    Tins::IP rtp = Tins::IP("192.0.2.2", "192.0.2.1") / Tins::UDP(4000, 40000) / Tins::RawPDU("\x80\x08xyz");
    const std::string media = CaptureBytes::bytesOf(rtp);
    CaptureBytes quiet;
    quiet.add(datagram("\r\n\r\n")).add(datagram(std::string(1, '\0')));
    const std::string packet = good.substr(40);
    const std::string body = CaptureBytes().add(datagram(kBody)).bytes().substr(40);
    const std::tuple<const char*, std::string, int, std::string, std::string> rows[] = {
        {"keep-alives and media", quiet.add(media).add(datagram("\r\n" + kOne)).bytes(), 0, "sip:1@d", ""},
        {"nothing", CaptureBytes().add(media).bytes(), 2, "", "no SIP message in 1 packet"},
        {"malformed", CaptureBytes().add(packet).add("\x45").add(packet.substr(0, 22)).bytes(), 0, "sip:1@d",
         "2 malformed packets passed over"},
        {"cut by the snap length", CaptureBytes().add(body, 5).bytes(), 2, "!", "1 packet captured only in part"},
        {"the file ends in a packet", good + good.substr(24, 30), 3, "sip:1@d", "damaged after packet 1 ("},
        {"a length from nowhere", good + std::string(16, '\xFF'), 3, "sip:1@d", "damaged after packet 1 ("},
        {"header only", good.substr(0, 10), 3, "", "kxsip: cannot read -: the capture's header is damaged"},
        {"an image", "\x89PNG\r\n\x1A\n", 2, "", "kxsip: -: no capture and no SIP\n"},
        {"another packer", "\xFD\x37zXZ\0 and so on"s, 2, "", "it is compressed with xz, unpack it first\n"},
        {"text with a body that is none", kOne + "\r\n\0"s, 2, "sip:1@d !", ""},
    };
    for (const auto& [name, bytes, exit, expected, note] : rows) {
        SCOPED_TRACE(name);
        const ToolRun run = showAll(bytes);
        EXPECT_EQ(found(run), expected);
        EXPECT_THAT(run.err, HasSubstr(note));
        EXPECT_EQ(run.exit, exit);
    }
    const ToolRun derived = kxsip("response 486 -", good);
    EXPECT_THAT(derived.out, testing::StartsWith("SIP/2.0 486 Busy Here\r\n"));
    EXPECT_EQ(kxsip("key -", good.substr(0, 10)).exit, 3);
    EXPECT_EQ(kxsip("ack -", good.substr(0, 10)).exit, 3);
}

TEST(CaptureTest, BrokenMessagesAreRefused) {
    const auto between = [](const std::string& payload, std::uint16_t from, std::uint16_t to) {
        const bool isBack = from > to;
        return Tins::IP(isBack ? "192.0.2.1" : "192.0.2.2", isBack ? "192.0.2.2" : "192.0.2.1") / Tins::UDP(to, from) /
               Tins::RawPDU(payload);
    };
    const std::string blank = "OPTIONS sip:1@d SIP/2.0 " + kOne.substr(kOne.find('\r'));
    const std::string stun = "\0\1\0\0\x21\x12\xA4\x42"s + std::string(12, 'x');
    CaptureBytes datagrams;
    datagrams.add(between("\r\n" + blank, 5080, 7)).add(between("\x80\x08 media", 5080, 8));
    datagrams.add(between(kOne, 4000, 4002)).add(between("\x80 garbage", 4002, 4000)).add(between("\x80\0", 4002, 40));
    for (const std::string& quiet : {"\r\n\r\n"s, std::string(9, '\0'), stun, "jaK\0"s, ""s}) {
        datagrams.add(between(quiet, 7, 5060));
    }
    datagrams.add(between("\x16\xFE\xFD\0\0 and so on"s, 7, 5061)).add("\x45 is cut");
    const ToolRun udp = kxsip("check -", datagrams.bytes());
    EXPECT_EQ(udp.out, "-\t0\trefused\tInvalid Start-Line for SIP request: does not contain 1 or 2 spaces\n"
                       "-\t1\tvalid\t\n-\t2\trefused\tInvalid Start-Line for SIP request: reached end of message "
                       "looking for end-of-line\n");
    EXPECT_EQ(udp.err, "kxsip: -: 1 malformed packet passed over\n"
                       "kxsip: -: passed over: 5 keep-alives, 1 datagram of DTLS, 2 datagrams without SIP\n"
                       "3 messages (RFC grammar): 1 valid, 2 refused\n");
    EXPECT_EQ(kxsip("show --json -", datagrams.bytes()).err, "kxsip: -: 1 malformed packet passed over\n");

    const Piece syn{~std::size_t{0}, "", Tins::TCP::SYN};
    const std::string ended = "a\r\nContent-Length: 4\r\n\r\nbody";
    const std::tuple<const char*, std::vector<Piece>, std::string> rows[] = {
        {"with a body", {syn, {0, "\r\n\r\n" + ended + kOne}}, "! sip:1@d"},
        {"without an end", {syn, {0, "a\r\nb\r\n"}, {6, kOne}}, "! sip:1@d"},
        {"after a message", {{0, "lost\r\n" + kOne + blank + kTwo}}, "sip:1@d ! sip:2@d"},
        {"without a line end", {syn, {0, std::string(9000, 'a')}, {9000, "\r\n" + kOne}}, "! sip:1@d"},
        {"the stream ends", {syn, {0, kOne + "abcdef"}}, "sip:1@d !"},
        {"TLS", {syn, {0, "\x16\3\1\0\5 client hello"s}}, ""},
        {"keep-alives",
         {syn, {0, std::string(4, '\0')}, {4, "\r\n\r\n" + kOne}, {4 + 4 + kOne.size(), "\r\n"}},
         "sip:1@d"},
    };
    for (const auto& [name, pieces, expected] : rows) {
        SCOPED_TRACE(name);
        CaptureBytes capture;
        for (const Piece& piece : pieces) {
            capture.add(segment(piece, 1));
        }
        EXPECT_EQ(found(showAll(capture.bytes())), expected);
    }
}

TEST(CaptureTest, Filters) {
    const std::pair<const char*, const char*> rows[] = {
        {"--method bye", "4 5"},
        {"--method INVITE,ACK --status 2xx", "2"},
        {"--status 4XX --status 100", "8 9"},
        {"--call-id 1-5101@127.0.0.1 --method ACK", "10"},
        {"--address 127.0.0.1:5060 --status 486,180", "1 9"},
        {"--address 127.0.0.1,[::1] --method BYE", "4 5"},
        {"--address 192.0.2.1", ""},
    };
    for (const auto& [options, expected] : rows) {
        std::string numbers;
        for (const auto& message :
             kxsip(std::string("show --json ") + options + " " + sample("captures/call_udp.pcap")).json()) {
            numbers += (numbers.empty() ? "" : " ") + message["index"].dump();
        }
        EXPECT_EQ(numbers, expected) << options;
    }
    // refused messages are filtered by their text
    const std::string refused = "SIP/2.0 486 No\r\ni: p@q\r\nCSeq: 1 INVITE\r\nl: 5\r\n\r\n";
    EXPECT_EQ(kxsip("check --status 486 --method INVITE --call-id p@q -", kOne + refused).err,
              "1 message (RFC grammar): 1 refused\n");
    EXPECT_EQ(kxsip("check --status 200 -", kOne + refused).exit, 4);
    EXPECT_EQ(kxsip("check --status 999 -").exit, 64);
}
