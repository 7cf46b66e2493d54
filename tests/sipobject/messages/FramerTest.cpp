// Streams cut at every place: the frames are those of the whole.

#include "sipobject/messages/KxSipFramer.h"

#include "core/MemAllocatorFaults.h"
#include "tests/sipobject/support/MessageSupport.h"

using namespace std::string_literals;

namespace {

using Kind = KxSipFramer::Kind;
using Mode = KxSipFramer::Mode;

const std::string kStart = "OPTIONS sip:b@h SIP/2.0\r\n";

/** The frames of an input in pieces of `size` bytes after one of `first` bytes, up to an error: "[message]", "ping",
    "pong", "!error: bytes". */
std::string framesOf(KxSipFramer framer, const std::string& input, std::size_t first, std::size_t size = SIZE_MAX) {
    std::string frames;
    for (std::size_t at = 0, count = first; at < input.size(); count = size) {
        const std::string piece = input.substr(at, count); // lives as long as its frames only
        at += piece.size();
        std::string_view rest = piece;
        for (Kind kind = Kind::Message; kind != Kind::Incomplete;) {
            const KxSipFramer::Frame frame = framer.next(rest);
            rest.remove_prefix(frame.consumed);
            kind = frame.kind;
            if (kind == Kind::Error) {
                return frames.append("!").append(frame.errorText()).append(": ").append(frame.bytes);
            }
            frames += kind == Kind::Message ? "[" + std::string(frame.bytes) + "]"
                      : kind == Kind::Ping  ? "ping"
                      : kind == Kind::Pong  ? "pong"
                                            : "";
        }
    }
    return frames;
}

void expectFrames(const KxSipFramer& framer, const std::string& input, const std::string& frames) {
    EXPECT_EQ(framesOf(framer, input, 1, 1), frames);
    for (std::size_t cut = 1; cut <= input.size(); ++cut) {
        ASSERT_EQ(framesOf(framer, input, cut), frames) << "cut at " << cut;
    }
}

} // namespace

TEST(FramerTest, EveryCutGivesTheSameFrames) {
    const std::string empty = kStart + "l:0\r\n\r\n";
    const char* const rows[] = {
        // what follows the start line; its last three bytes are the body
        "Via: SIP/2.0/TCP h\r\nContent-Length: 3\r\n\r\nabc",
        "CONTENT-length  :\r\n\t 3 \r\n\r\n\r\n\r",
        "l: 3\r\nX: \r\nL: 003\r\n\r\n\nl:",
        "l: 3\n\nabc",
        "X: a\r\n l: 9\r\nl: 3\r\n\r\rX: a\r\n\r\r\nabc",
        " l: 3\r\n \r\n\t\r\n\r\nabc", // blanks before the name; lines of blanks belong to the header
        "no colon\r\n:\r\n l: 3\r\n:\r\nContent-Lengthy: 1\r\n\r\nabc",
    };
    for (const std::string text : rows) {
        const std::string message = kStart + text;
        expectFrames(KxSipFramer(), message + empty, "[" + message + "][" + empty + "]");
        expectFrames(KxSipFramer(Mode::Stream, {message.size() - 3, 3}), message, "[" + message + "]");
        KxByteArrayInputStream in(message); // the parser finds the same end
        static_cast<void>(outcomeOf([&in] { KxSipMessage::sConstructFrom(in); }));
        EXPECT_EQ(in.available(), 0U) << text;
    }
    const std::string nul = kStart + "X\0: \0\r\nl: 1\r\n\r\n\0"s;
    expectFrames(KxSipFramer(), nul + nul, "[" + nul + "][" + nul + "]");
    for (const std::string between : {"\r\n", "\n", "\r\n\r", "\n\n\n", "\r\n\r\r\n\n"}) {
        expectFrames(KxSipFramer(), between + empty + between + empty, "[" + empty + "][" + empty + "]");
    }
    expectFrames(KxSipFramer(), "\r\r\n\r\n" + empty + "\r\n\r\n\r\n\r\n", "ping[" + empty + "]pingping");
    KxSipFramer pinging;
    EXPECT_EQ(pinging.next("\r\n").kind, Kind::Incomplete); // it may be half of a ping
    pinging.expectPong();
    expectFrames(pinging, "\r\n\r\n\r\n" + empty + "\r\n", "pongping[" + empty + "]");
    expectFrames(pinging, empty + "\r\n", "[" + empty + "]pong");
}

TEST(FramerTest, WhatCannotBeFramed) {
    const std::pair<std::string, std::string> rows[] = {
        {"X: 1\r\n\r\n", "Content-Length is missing"},
        {"l: 5\r\nContent-Length: 4\r\n\r\n", "Content-Length occurs with different values"},
        {"l: 5\r\nl: -5\r\n\r\n", "Content-Length is not a number"},
        {"l: 5, 5\r\n\r\n", "Content-Length is not a number"},
        {"l: 5\r\nl:\r\n\r\n", "Content-Length is not a number"},
        {"l: 6\r\n\r\n", "the body is too large"},
        {"l: 18446744073709551616\r\n\r\n", "the body is too large"},
    };
    for (const auto& [headers, error] : rows) {
        const std::string section = kStart + headers;
        expectFrames({Mode::Stream, {section.size(), 5}}, section + kStart, "!" + error + ": " + section);
        const std::string cut = section.substr(0, section.size() - 1);
        expectFrames({Mode::Stream, {cut.size(), 5}}, section, "!the header section is too large: " + cut);
    }
    KxSipFramer framer(Mode::Stream, {100, SIZE_MAX});
    EXPECT_EQ(framer.next(kStart + "l: 4294967295\r\n\r\n\r\n").consumed, kStart.size() + 17);
    const KxSipFramer::Frame again = framer.next("\r\n\r\n");
    EXPECT_TRUE(again.error == KxSipFramer::Error::BodyTooLarge && again.bytes.empty() && again.consumed == 4);
    framer.reset();
    EXPECT_EQ(framer.next("\r\n\r\n").kind, Kind::Ping);
}

TEST(FramerTest, OneMessageAtATime) {
    const std::pair<std::string, std::string> rows[] = {
        {"X: a\r\n\r\nabc", "[X: a\r\n\r\nabc]"},
        {"\r\nX: a\r\nl: 2\r\n\r\nabc", "[X: a\r\nl: 2\r\n\r\nab]"},
        {"\r\n\r\n", "ping"},
        {"\r\n", "pong"},
        {"\r\n\r\n\r\n", ""},
        {"X: a\r\n\r\nabcd", "!the body is too large: X: a\r\n\r\n"},
        {"X\r\nl: 3\r\n\r\nab", "!the message ends too early: X\r\nl: 3\r\n\r\n"},
        {"X: a\r\n", "!the message ends too early: X: a\r\n"},
        {"X: 890123456789012345", "!the header section is too large: X: 89012345678901234"},
    };
    for (const auto& [input, frames] : rows) {
        EXPECT_EQ(framesOf({Mode::Messages, {20, 3}}, input, SIZE_MAX), frames);
    }
}

TEST(FramerTest, KeepsOnlyWhatIsUnfinished) {
    const std::string rest = "X:\r\n " + std::string(500, 'x') + "\r\nl: 500\r\n\r\n" + std::string(500, 'b');
    const std::string input = kStart + rest + kStart;
    KxSipFramer framer;
    EXPECT_EQ(framer.next(input).bytes.data(), input.data()); // not copied
    EXPECT_EQ(framer.next(kStart).kind, Kind::Incomplete);
    std::string bytes;
    std::uint64_t faults = 0;
    for (; bytes.empty() && faults < 99; ++faults) { // without memory nothing is consumed
        EXPECT_EQ(framer.pending(), kStart);
        Oskan::MemAllocatorFaults::sFailAfter(faults + 1);
        try {
            const std::string_view found = framer.next(rest).bytes;
            Oskan::MemAllocatorFaults::sDisarm();
            bytes = found;
        } catch (const std::bad_alloc&) { // the next attempt succeeds later or at all
        }
    }
    EXPECT_TRUE(faults > 1 && bytes == kStart + rest) << faults;
}

TEST(FramerTest, HostileStreamsTakeLinearTime) {
    constexpr std::size_t kSize = (std::size_t{1} << 20) / kShrink;
    std::string lengths = kStart;
    std::string lineEnds;
    while (lineEnds.size() < kSize) {
        lengths += "l: 1\r\n";
        lineEnds += "\r\n\r\n";
    }
    EXPECT_EQ(framesOf(KxSipFramer(), lineEnds, 1, 1).size(), lineEnds.size()); // a "ping" for each four bytes
    for (const std::string& input : {lengths, kStart + std::string(kSize, 'x'), kStart + std::string(kSize, '\r'),
                                     kStart + "l: 2000000\r\n\r\n" + std::string(kSize, '\n')}) {
        KxSipFramer framer(Mode::Stream, {2 * kSize, 2000000});
        std::size_t moves = 0;
        for (const char c : input) {
            const char* const kept = framer.pending().data();
            static_cast<void>(framer.next({&c, 1}));
            moves += kept != framer.pending().data() ? 1 : 0;
        }
        EXPECT_LT(moves, 40U); // each at least doubles the room
    }
}
