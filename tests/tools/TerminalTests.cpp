#include "tests/tools/ToolRun.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using testing::Not;

/** What the command writes to a terminal. */
std::string onTerminal(const std::string& environment, const std::string& arguments) {
    const Scratch scratch;
    const std::string command = environment + " " + std::getenv("KXSIP") + " " + arguments;
    const std::string script = "script -qec '" + command + "' /dev/null </dev/null >" + scratch.path("out");
    EXPECT_GE(std::system(script.c_str()), 0);
    return scratch.read("out");
}

class TerminalTest : public testing::Test {
protected:
    void SetUp() override {
        const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
        if (terminal == -1 || close(terminal) != 0) {
            GTEST_SKIP() << "no pseudo-terminals, as in a bare root folder";
        }
    }
};

} // namespace

TEST_F(TerminalTest, ColoursOnlyWhereTheyAreWelcome) {
    const std::tuple<const char*, const char*, bool, bool> rows[] = {
        {"env -u NO_COLOR TERM=xterm", "", true, true},
        {"env -u NO_COLOR TERM=xterm", " --color never", true, false},
        {"env NO_COLOR= TERM=xterm", "", true, true},
        {"env NO_COLOR=1 TERM=xterm", "", true, false},
        {"env NO_COLOR=1 TERM=xterm", " --color=always", true, true},
        {"env -u NO_COLOR TERM=dumb", "", true, false},
        {"", "", false, false},
        {"", " --color always", false, true},
    };
    for (const auto& [environment, option, isTerminal, isColoured] : rows) {
        const std::string arguments = "show " + sample("invite.sip") + option;
        const std::string out = isTerminal ? onTerminal(environment, arguments) : kxsip(arguments).out;
        EXPECT_THAT(out, HasSubstr("INVITE")) << environment << option;
        EXPECT_EQ(out.find('\x1B') != std::string::npos, isColoured) << environment << option;
    }
    EXPECT_EQ(kxsip("show --color sometimes").exit, 64);
}

TEST_F(TerminalTest, NoBytesOfAMessageReachIt) {
    const Scratch scratch;
    const std::string evil = "\x1B[2J\xC2\x9B\x07";
    const std::string request = "OPTIONS sip:c@d;x=" + evil + " SIP/2.0\r\n" + kDialog +
                                "CSeq: 1 OPTIONS\r\nX-A: " + evil + "\r\nMax-Forwards: 1\r\n" + kNoBody;
    const std::string file = scratch.write("a.sip", request);
    for (const char* const command : {"show --color never", "show --json", "show --wire", "show --log", "check -q",
                                      "key", "response 200", "cancel"}) {
        const std::string out = onTerminal("", std::string(command) + " " + file);
        EXPECT_THAT(out, Not(testing::ContainsRegex("\x1B|\xC2\x9B|\x07"))) << command;
        EXPECT_THAT(out, Not(testing::IsEmpty())) << command;
    }
    EXPECT_THAT(onTerminal("", "show --wire " + file), HasSubstr("X-A: \\x1B[2J\\xC2\\x9B\\x07\r\n"));
    EXPECT_EQ(kxsip("show --wire " + file).out, request);
}

TEST_F(TerminalTest, CallsAreAlignedToItsWidth) {
    for (const int width : {60, 100, 200}) {
        const std::string set = "stty cols " + std::to_string(width) + "; LC_ALL=C";
        std::istringstream out(onTerminal(set, "calls " + sample("captures/call_udp.pcap")));
        std::vector<std::string> lines;
        for (std::string line; std::getline(out, line);) {
            lines.push_back(line.substr(0, line.find('\r')));
            EXPECT_LE(lines.back().size(), static_cast<std::size_t>(width));
        }
        ASSERT_EQ(lines.size(), 3U);
        EXPECT_EQ(lines[0].find("from"), lines[1].find("sip:"));
    }
}

TEST(ColourTest, UrisStandOut) {
    const std::string more = "CSeq: 1 OPTIONS\r\nContact: <sip:c@d;x=1>;y=2\r\nX-A: gossip: no, tel:1\r\n";
    const std::string out = kxsip("show --color always", "OPTIONS sip:c@d SIP/2.0\r\n" + kDialog + more + kNoBody).out;
    EXPECT_THAT(out, HasSubstr("<\x1B[35msip:c@d;x=1\x1B[0m>;y=2"));
    EXPECT_THAT(out, HasSubstr("gossip: no, \x1B[35mtel:1\x1B[0m"));
}

TEST_F(TerminalTest, LaddersAreAsWideAsTheTerminal) {
    const std::string busy = "flow --color never --status 486 " + sample("captures/call_udp.pcap");
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"env COLUMNS=50", "", true},
        {"stty cols 50; env COLUMNS=500", "", true},
        {"stty cols 500; env COLUMNS=50", "", false},
        {"stty cols 50; env COLUMNS=50", " --width 500", false},
        {"stty cols 50; env COLUMNS=50", " | cat", false},
    };
    for (const auto& [environment, option, isNarrow] : rows) {
        const std::string out = onTerminal(environment, busy + option);
        EXPECT_EQ(out.find("127.0.0.1:5060  486") == std::string::npos, isNarrow) << environment << option;
        EXPECT_EQ(out.find("repeats 6)") == std::string::npos, isNarrow) << environment << option;
    }
}

TEST_F(TerminalTest, ProgressOfLongInputs) {
    // longer than the half second before progress is shown, plus the start of the tool on a busy machine
    const std::string slow = "(sleep 2; cat " + sample("invite.sip") + ") |";
    EXPECT_THAT(onTerminal(slow, "check - >/dev/null"),
                testing::AllOf(HasSubstr(" bytes of -"), HasSubstr("1 message (RFC grammar): 1 valid")));
    EXPECT_THAT(onTerminal(slow, "check -q - >/dev/null"), testing::IsEmpty());
    EXPECT_THAT(onTerminal("", "check " + sample("invite.sip")), Not(HasSubstr("%")));
}
