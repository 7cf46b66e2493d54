#include "tests/tools/CaptureFile.h"

using namespace requests;
using namespace std::string_literals;
using testing::HasSubstr;

TEST(CaptureInputTest, TunnelsAreOpened) {
    Tins::IP packet = datagram(kOne);
    const std::string inner = CaptureBytes::bytesOf(packet);
    const auto in = [](std::uint8_t protocol, const std::string& payload) {
        Tins::IP outer = Tins::IP("198.51.100.2", "198.51.100.1") / Tins::RawPDU(payload);
        outer.protocol(protocol);
        return outer;
    };
    const auto vxlan = [](const std::string& payload) {
        return Tins::IP("198.51.100.2", "198.51.100.1") / Tins::UDP(4789, 50000) /
               Tins::RawPDU("\x08\0\0\0\0\0\x07\0"s + payload);
    };
    const std::string addresses(12, '\1');
    const std::string ethernet = addresses + "\x08\0"s + inner;
    Tins::IP twice = in(47, "\x30\0\x65\x58\0\0\0\x05\0\0\0\x01"s + ethernet); // key, sequence
    const std::string v6 = "\x60\0\0\0"s + static_cast<char>(inner.size() / 256) + static_cast<char>(inner.size()) +
                           "\x04\x40"s + std::string(32, '\1') + inner;
    const std::string pppoe = "\x11\0\0\x01\x7F\xFF\0\x21"s + inner + "padding";
    std::string tags;
    std::string layers;
    for (int i = 0; i < 60000; ++i) {
        tags += "\x81\0\0\x05"s;
        layers += i < 13000 ? "\x45\0\0\0\0\1\0\0\x40\x04\0\0\1\2\3\4\1\2\3\4"s : "";
    }
    const std::tuple<const char*, int, std::vector<std::string>, std::string> rows[] = {
        {"IP in IP", 101, fragments(in(4, inner)), "sip:1@d"},
        {"GRE, in fragments", 101, fragments(in(47, "\0\0\x08\0"s + inner)), "sip:1@d"},
        {"GRE with Ethernet, in VXLAN", 101, fragments(vxlan(addresses + "\x08\0"s + CaptureBytes::bytesOf(twice))),
         "sip:1@d"},
        {"GRE with IPv6, which has IPv4", 101, fragments(in(47, "\x80\0\x86\xDD\0\0\0\0"s + v6)), "sip:1@d"},
        {"PPPoE in stacked VLAN", 1, {addresses + "\x88\xA8\0\1\x81\0\0\2\x88\x64"s + pppoe}, "sip:1@d"},
        {"VLAN in cooked", 113, {std::string(14, '\0') + "\x81\0\0\1\x08\0"s + inner}, "sip:1@d"},
        {"more tags than are read", 1, {addresses + tags + "\x08\0"s + inner}, ""},
        {"more layers than are read", 101, {layers + inner}, ""},
    };
    for (const auto& [name, type, frames, expected] : rows) {
        SCOPED_TRACE(name);
        CaptureBytes capture(type);
        for (const std::string& frame : frames) {
            capture.add(frame);
        }
        const ToolRun run = showAll(capture.bytes());
        EXPECT_EQ(found(run), expected) << run.err;
        if (!expected.empty()) {
            EXPECT_EQ(run.json().at(0)["source"]["address"], "192.0.2.1");
        }
    }
}

TEST(CaptureInputTest, BlocksOfPcapng) {
    const auto text = [](std::uint64_t value, int length, bool isBig) {
        std::string bytes;
        for (int i = 0; i < length; ++i) {
            bytes += static_cast<char>(value >> 8 * (isBig ? length - 1 - i : i));
        }
        return bytes;
    };
    for (const bool isBig : {false, true}) {
        const auto n2 = [&](std::uint64_t value) { return text(value, 2, isBig); };
        const auto n4 = [&](std::uint64_t value) { return text(value, 4, isBig); };
        const auto block = [&](std::uint64_t type, std::string body) {
            body.append((4 - body.size() % 4) % 4, '\0');
            return n4(type) + n4(body.size() + 12) + body + n4(body.size() + 12);
        };
        Tins::IP first = datagram(kOne);
        const std::string raw = CaptureBytes::bytesOf(first);
        const std::string ethernet = std::string(12, '\1') + "\x08\0"s + raw;
        const std::string sizes = n4(raw.size()) + n4(raw.size());
        const std::string section = block(0x0A0D0D0A, n4(0x1A2B3C4D) + n4(1) + n4(~0U) + n4(~0U));
        const std::string nano = block(1, n2(101) + n2(0) + n4(0) + n2(9) + n2(1) + "\x09\0\0\0"s);
        const std::string half = block(1, n2(1) + n2(0) + n4(0) + n2(9) + n2(1) + "\x81\0\0\0"s + n2(14) + n2(8) +
                                              text(100, 8, isBig) + n4(0));
        const std::string whole =
            section + nano + half + block(0x0BAD, "unknown") +
            block(6, n4(0) + n4(1) + n4(705032704) + sizes + raw) + // 5,000,000,000 nanoseconds
            block(6, n4(1) + n4(0) + n4(7) + n4(ethernet.size()) + n4(ethernet.size()) + ethernet) +
            block(2, n2(0) + n2(0) + n4(0) + n4(9000000) + sizes + raw) + section + nano +
            block(3, n4(raw.size()) + raw);
        const std::string times = "1970-01-01T00:00:05.000000Z 1970-01-01T00:01:43.500000Z 1970-01-01T00:00:00.009000Z "
                                  "1970-01-01T00:00:00.009000Z ";
        const std::string packet = block(6, n4(7) + n4(0) + n4(0) + sizes + raw);
        const std::tuple<std::string, std::string> rows[] = {
            {"", ""},
            {packet, "after packet 4 (a packet is of an interface that is not described)"},
            {packet.substr(0, 20), "after packet 4 (it ends within a block)"},
            {n4(6) + n4(~0U) + n4(0), "after packet 4 (a block is too long)"},
            {block(6, n4(0) + n4(0) + n4(0) + n4(~0U) + n4(1)), "after packet 4 (a packet is longer than its block)"},
            {block(6, "\0"), "after packet 4 (a block is too short)"},
            {block(1, n2(101) + n2(0) + n4(0) + n2(9) + n2(1) + "\xFF\0\0\0"s), "unit of time that is not supported"},
            {n4(9) + n4(12) + n4(16) + section.substr(0, 24) + n4(9),
             "after packet 4 (the two lengths of a block differ)"},
        };
        for (const auto& [more, note] : rows) {
            const ToolRun run = showAll(whole + more);
            std::string found;
            for (const nlohmann::json& message : run.json()) {
                found += message["time"].get<std::string>() + " ";
            }
            EXPECT_EQ(found, times);
            EXPECT_EQ(run.exit, note.empty() ? 0 : 3);
            EXPECT_THAT(run.err, HasSubstr(note));
        }
        EXPECT_EQ(
            showAll(section + block(1, n2(105) + n2(0) + n4(0)) + packet.substr(0, 8) + n4(0) + packet.substr(12)).exit,
            3);
    }
}

TEST(CaptureInputTest, PackedFiles) {
    const auto packed = [](const std::string& bytes) {
        const Scratch scratch;
        const std::string in = scratch.write("in", bytes);
        EXPECT_EQ(std::system(("gzip -n " + in).c_str()), 0);
        return scratch.read("in.gz");
    };
    std::string many;
    for (int i = 0; i < 3000; ++i) {
        many += i % 2 == 0 ? kOne : kTwo;
    }
    const std::string text = packed(many);
    const std::string capture = packed(CaptureBytes().add(datagram(kOne)).add(datagram(kTwo)).bytes());
    const std::tuple<std::string, int, std::string, std::string> rows[] = {
        {text, 0, "3000 messages (RFC grammar): 3000 valid\n", ""},
        {text + packed(kOne) + std::string(512, '\0'), 0, "3001 messages (RFC grammar): 3001 valid\n", ""},
        {capture, 0, "2 messages (RFC grammar): 2 valid\n", ""},
        {text.substr(0, text.size() - 1), 3, "3000 valid\n",
         "kxsip: -: the gzip data is cut off; what comes before it"},
        {text + "more", 3, "3000 valid\n", "kxsip: -: the gzip data is damaged (incorrect header check); what"},
        {capture.substr(0, capture.size() - 9), 3, "", "the capture is damaged after packet"},
        {text.substr(0, 9), 3, "0 messages (RFC grammar)\n", "kxsip: -: the gzip data is cut off"},
    };
    for (const auto& [bytes, exit, tally, note] : rows) {
        const ToolRun run = kxsip("check -", bytes);
        EXPECT_EQ(run.exit, exit);
        EXPECT_THAT(run.err, HasSubstr(tally));
        EXPECT_THAT(run.err, HasSubstr(note));
    }
    for (const std::string& bytes : {text, capture}) {
        EXPECT_EQ(kxsip("key -", bytes).exit, 0);
        EXPECT_THAT(kxsip("response 486 --number 1 -", bytes).out, testing::StartsWith("SIP/2.0 486 Busy Here\r\n"));
    }
}

TEST(CaptureInputTest, PacketsOfMessagesAreWritten) {
    const Scratch scratch;
    const auto written = [&scratch](const std::string& options, const std::string& input, const std::string& name) {
        const ToolRun run = kxsip("check -q " + options + " -o " + scratch.path(name) + " -", input);
        EXPECT_EQ(run.exit, run.err.find("no message matches") == std::string::npos ? 0 : 4) << run.err;
        return scratch.read(name);
    };
    const std::string both = kOne + kTwo;
    const Piece pieces[] = {{~std::size_t{0}, "", Tins::TCP::SYN}, {90, both.substr(90)}, {0, both.substr(0, 90)}};
    CaptureBytes all;
    for (const Piece& piece : pieces) {
        all.add(segment(piece, 1));
    }
    const std::string streams = all.bytes(); // both messages are in the second packet, none in the SYN
    const std::size_t unwanted = CaptureBytes().add(segment(pieces[0], 1)).bytes().size();
    EXPECT_EQ(written("", streams, "a.pcap").substr(24), streams.substr(unwanted));

    CaptureBytes joined(CaptureBytes::kRaw, true);
    joined.add(datagram(kTwo));
    for (const std::string& frame : fragments(datagram(kBody))) {
        joined.add(frame);
    }
    Tins::IP cut = datagram(kOne);
    joined.add(CaptureBytes::bytesOf(cut), 3);
    const std::string kept = written("--method OPTIONS", joined.bytes(), "b.pcapng");
    EXPECT_EQ(kept, joined.bytes());
    EXPECT_EQ(kxsip("check -q -", written("", joined.bytes(), "b.pcap")).out, kxsip("check -q -", kept).out);
    EXPECT_EQ(written("--status 200", joined.bytes(), "c.pcapng").size(), 28U);

    CaptureBytes ethernet(1);
    Tins::IP packet = datagram(kOne);
    ethernet.add(std::string(12, '\1') + "\x08\0"s + CaptureBytes::bytesOf(packet));
    const std::string files = scratch.write("in1", streams) + " " + scratch.write("in2", ethernet.bytes());
    EXPECT_EQ(kxsip("show -o " + scratch.path("d.pcapng") + " " + files).exit, 0);
    EXPECT_EQ(found(kxsip("show --json " + scratch.path("d.pcapng"))), "sip:2@d sip:1@d");
    const std::tuple<std::string, std::string> rows[] = {
        {"e.pcap " + files, "the packets have several link types; name the file .pcapng\n"},
        {"in1 " + files, "it is read at the same time\n"},
        {"no/where " + files, "No such file or directory\n"},
        {"f.pcap " + sample("call.sip"), "call.sip: it is no capture\n"},
    };
    for (const auto& [arguments, why] : rows) {
        const ToolRun run = kxsip("show -o " + scratch.path(arguments));
        EXPECT_THAT(run.err, testing::EndsWith(why));
        EXPECT_EQ(run.exit, 3);
    }
}

TEST(CaptureInputTest, TimeIsInProportionToLength) {
    const std::string bad = "INVITE sip:a SIP/3.0\r\n";
    const std::string unended = "OPTIONS sip:1@d SIP/2.0\r\nContent-Length: 99999999\r\n\r\n";
    for (const std::string& message : {bad, unended}) {
        std::string text;
        while (text.size() < 2000000) {
            text += message;
        }
        const std::string count = std::to_string(text.size() / message.size());
        EXPECT_EQ(kxsip("check -", text).err, count + " messages (RFC grammar): " + count + " refused\n");
    }
}
