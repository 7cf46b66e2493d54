#include "tests/tools/CaptureFile.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using testing::Not;

/** A run of the tool that reads from a pipe. */
class LiveRun {
public:
    explicit LiveRun(const std::string& arguments) {
        std::array<int, 2> in{};
        std::array<int, 2> out{};
        if (pipe2(in.data(), O_CLOEXEC) != 0 || pipe2(out.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipes");
        }
        const std::string command = std::string("exec ") + std::getenv("KXSIP") + " " + arguments;
        m_child = fork();
        if (m_child == 0) {
            dup2(in[0], STDIN_FILENO);
            dup2(out[1], STDOUT_FILENO);
            dup2(out[1], STDERR_FILENO);
            static_cast<void>(std::signal(SIGINT, SIG_DFL)); // a test in the background may ignore it
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
        close(in[0]), close(out[1]);
        m_in = in[1], m_out = out[0];
    }
    ~LiveRun() { close(m_out); }
    LiveRun(const LiveRun&) = delete;
    LiveRun& operator=(const LiveRun&) = delete;

    void write(std::string_view bytes) const {
        EXPECT_EQ(::write(m_in, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    /** Waits at most two seconds for the text in the output, and drops the output up to its end. */
    bool await(const std::string& text) {
        std::size_t at = m_text.find(text);
        while (at == std::string::npos && read()) {
            at = m_text.find(text);
        }
        m_text.erase(0, at == std::string::npos ? 0 : at + text.size());
        return at != std::string::npos;
    }
    /** Ends the input, with a signal if it is not 0. Returns the rest of the output, standard error in it. */
    ToolRun finish(int signal) {
        if (signal == 0) {
            close(m_in);
        } else {
            kill(m_child, signal);
        }
        while (read()) {
        }
        EXPECT_TRUE(m_isEnded);
        if (signal != 0) {
            close(m_in);
        }
        int status = 0;
        waitpid(m_child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, m_text, ""};
    }

private:
    bool read() {
        pollfd output{m_out, POLLIN, 0};
        std::array<char, 4096> block;
        if (poll(&output, 1, 2000) != 1) {
            return false;
        }
        const ssize_t count = ::read(m_out, block.data(), block.size());
        m_text.append(block.data(), static_cast<std::size_t>(count));
        m_isEnded = count == 0;
        return !m_isEnded;
    }

    pid_t m_child = -1;
    int m_in = -1;
    int m_out = -1;
    std::string m_text;
    bool m_isEnded = false;
};

const std::string kOne = sipOptions(1);
const std::string kAnswer = sipMessage("SIP/2.0 200 x", "CSeq: 1 OPTIONS\r\n");
const std::string kBody = sipMessage("OPTIONS sip:3@d SIP/2.0", "CSeq: 3 OPTIONS\r\nContent-Type: a/b\r\n", "01234");

/** What the packets after the first `count` ones add to a capture. */
std::string packets(bool isNext, const std::vector<std::string>& messages, std::size_t count) {
    CaptureBytes capture(CaptureBytes::kRaw, isNext);
    std::size_t begin = 0;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        begin = i == count && i > 0 ? capture.bytes().size() : begin;
        capture.add(datagram(messages[i]));
    }
    return capture.bytes().substr(begin);
}

/** A message of a call, from "BRANCH CSEQ METHOD" or "BRANCH CSEQ METHOD CODE" and any header lines. */
std::string inCall(const std::string& text, const std::string& more) {
    std::istringstream words(text);
    std::string branch, number, method, code;
    words >> branch >> number >> method >> code;
    const std::string start = code.empty() ? method + " sip:c@d SIP/2.0" : "SIP/2.0 " + code + " x";
    std::string message = sipMessage(start, "CSeq: " + number + " " + method + "\r\n" + more);
    return message.replace(message.find("z9hG4bKa"), 8, "z9hG4bK" + branch);
}

} // namespace

TEST(LiveTest, EachMessageIsShownWhenItHasArrived) {
    struct Row {
        const char* arguments;
        std::vector<std::pair<std::string, std::string>> steps; ///< What is written, and the output then; may be none.
        int signal;
        int exit;
        std::string rest;
    };
    const std::string ping = "\r\n\r\n";
    const std::string invite = sipMessage("INVITE sip:c@d SIP/2.0", "CSeq: 2 INVITE\r\n");
    const std::string pcap = packets(false, {kOne, kBody}, 1);
    const std::string next = packets(true, {kOne, kBody}, 1);
    const Row rows[] = {
        {"check -",
         {{packets(false, {kOne}, 0), "0\tvalid"},
          {pcap.substr(0, 40), ""},
          {pcap.substr(40), "1\tvalid"},
          {pcap.substr(0, 40), ""}},
         SIGINT,
         0,
         "2 messages (RFC grammar): 2 valid"},
        {"show --grammar classic -",
         {{packets(true, {kOne}, 0), "sip:1@d"}, {next.substr(0, 9), ""}, {next.substr(9), "sip:3@d"}},
         SIGTERM,
         0,
         ""},
        {"show -",
         {{kOne, "sip:1@d"},
          {ping + kBody.substr(0, 99), ""},
          {kBody.substr(99, kBody.size() - 100), ""},
          {kBody.substr(kBody.size() - 1), "sip:3@d"},
          {"BYE\r\n\r\nno\r\n", "refused"},
          {kOne, "sip:1@d"},
          {kBody.substr(0, 20), ""}},
         SIGINT,
         2,
         "refused"},
        {"flow -",
         {{packets(false, {kOne, kAnswer}, 0), "200 x (to OPTIONS)"}, {packets(false, {kOne, kAnswer, invite}, 1), ""}},
         SIGINT,
         0,
         "INVITE"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments);
        LiveRun run(row.arguments);
        for (const auto& [bytes, expected] : row.steps) {
            run.write(bytes);
            ASSERT_TRUE(run.await(expected)) << expected;
        }
        const ToolRun end = run.finish(row.signal);
        EXPECT_EQ(end.exit, row.exit);
        EXPECT_THAT(end.out,
                    testing::AllOf(HasSubstr(row.rest), Not(HasSubstr("damaged")), Not(HasSubstr("(to OPTIONS)"))));
    }
}

TEST(LiveTest, PiecesDoNotChangeWhatIsRead) {
    const std::string noLength = "OPTIONS sip:4@d SIP/2.0\r\n" + kDialog + "CSeq: 4 OPTIONS\r\n\r\n";
    std::string inUri = kBody;
    inUri.replace(inUri.find("3@d"), 3, "3@d?body=x");
    std::string differs = kBody;
    differs.replace(differs.find("Content-Length"), 0, "Content-Length: 1\r\nX: a\r\n\r b\n");
    for (const std::string& input :
         {kOne + kBody + "\r\n", noLength + kBody, inUri + kOne, differs + kOne,
          " \n" + kOne + "BYE\n\r\r\nOPTIONS  SIP/2.0\n" + kBody + "l: 9\n\nx", std::string("\r\n\n")}) {
        for (const char* const arguments : {"show -", "show --grammar classic -"}) {
            LiveRun run(arguments);
            for (const char& byte : input) {
                run.write({&byte, 1});
            }
            const ToolRun live = run.finish(0);
            const ToolRun whole = kxsip(arguments, input);
            EXPECT_EQ(live, (ToolRun{whole.exit, whole.out, ""})) << input;
        }
    }
}

TEST(LiveTest, ACallIsDrawnOnceWhenItHasEnded) {
    const std::vector<const char*> rows[] = {
        {"a 1 INVITE", "a 1 INVITE 407", "a 1 ACK", "b 2 INVITE", "b 2 INVITE 180", "b 2 INVITE 200", "b 2 INVITE 180",
         "c 2 ACK", "d 3 INFO", "d 3 INFO 500", "e 4 BYE", "e 4 BYE 200"},
        {"a 1 INVITE", "b 1 INVITE", "b 1 INVITE 486", "b 1 ACK", "b 1 ACK", "a 1 INVITE 486", "a 1 ACK"},
        {"a 1 INVITE", "a 1 CANCEL", "a 1 CANCEL 200", "a 1 INVITE 487", "a 1 ACK"},
        {"a 1 SUBSCRIBE", "a 1 SUBSCRIBE 200", "b 2 NOTIFY", "b 2 NOTIFY 200", "c 3 NOTIFY!", "c 3 NOTIFY 200"},
    };
    for (const std::vector<const char*>& row : rows) {
        SCOPED_TRACE(row[1]);
        std::vector<std::string> messages;
        for (std::string text : row) {
            const bool isLast = text.back() == '!';
            text.resize(text.size() - (isLast ? 1 : 0));
            messages.push_back(inCall(text, isLast ? "Subscription-State: terminated;reason=timeout\r\n" : ""));
        }
        LiveRun run("flow -");
        run.write(packets(false, messages, 0));
        EXPECT_TRUE(run.await("Call-ID x@y, " + std::to_string(row.size()) + " messages"));
        EXPECT_THAT(run.finish(0).out, Not(HasSubstr("Call-ID")));
    }
}

TEST(LiveTest, ListsCallsThatHaveEnded) {
    CaptureBytes capture;
    capture.add(datagram(sipOptions(1))).add(datagram(sipMessage("SIP/2.0 200 x", "CSeq: 1 OPTIONS\r\n")));
    LiveRun run("calls -");
    run.write(capture.bytes());
    EXPECT_TRUE(run.await("\tOPTIONS\t200\t"));
    EXPECT_EQ(run.finish(0).exit, 0);
}

TEST(LiveTest, CallsThatMayNeverEndAreLetGo) {
    const std::string invite = inCall("a 1 INVITE", "");
    std::string other = invite;
    other.replace(other.find("x@y"), 3, "z@y");
    CaptureBytes silent;
    silent.add(datagram(invite)).wait(3599).add(datagram(other)).wait(3600).add(datagram(inCall("b 2 INFO", "")));
    silent.wait(7201).add(datagram(other));
    CaptureBytes full;
    for (int i = 0; i < 10000; ++i) {
        full.add(datagram(invite));
    }
    for (const auto& [capture, begin] :
         {std::pair(silent, "Call-ID z@y, 1 message in 0.000 s (did not end: no message for 2 hours)"),
          std::pair(silent, "Call-ID x@y, 2 messages in 7199.002 s (did not end: no message for 2 hours)"),
          std::pair(full, "Call-ID x@y, 10000 messages in 0.999 s (did not end: it has 10000 messages)")}) {
        LiveRun run("flow -");
        run.write(capture.bytes());
        const bool isDrawn = run.await(begin);
        const ToolRun end = run.finish(0);
        EXPECT_TRUE(isDrawn) << begin << end.out.substr(0, 1500);
    }
}
