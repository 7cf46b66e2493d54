// Streams cut at every place: the frames are those of the whole.

#include "sipobject/messages/KxSipFramer.h"
#include "tests/sipobject/support/MessageSupport.h"

using namespace std::string_literals;

namespace {

using Kind = KxSipFramer::Kind;
using Mode = KxSipFramer::Mode;

const std::string kStart = "OPTIONS sip:b@h SIP/2.0\r\n";

std::string times(std::string_view text, std::size_t count) {
    std::string all;
    while (count-- != 0) {
        all += text;
    }
    return all;
}

/** Adds the frames of a piece of input: "[message]", "ping", "pong", "!error: bytes". Returns false after an error. */
bool readPiece(KxSipFramer& framer, std::string_view piece, std::string& frames) {
    while (true) {
        const KxSipFramer::Frame frame = framer.next(piece);
        const std::string bytes(frame.bytes);
        piece.remove_prefix(frame.consumed);
        if (frame.kind == Kind::Message) {
            frames += "[" + bytes + "]";
        } else if (frame.kind == Kind::Error) {
            frames.append("!").append(frame.errorText()).append(": ").append(bytes);
            return false;
        } else if (frame.kind == Kind::Incomplete) {
            EXPECT_TRUE(piece.empty() && bytes.empty());
            return true;
        } else {
            EXPECT_EQ(bytes, frame.kind == Kind::Ping ? "\r\n\r\n" : "\r\n");
            frames += frame.kind == Kind::Ping ? "ping" : "pong";
        }
    }
}

/** The frames of an input in pieces of `size` bytes after a first one of `first` bytes. */
std::string framesOf(KxSipFramer framer, const std::string& input, std::size_t first, std::size_t size) {
    std::string frames;
    bool goesOn = true;
    for (std::size_t at = 0, end = first; goesOn && at < input.size(); at = end, end += size) {
        goesOn = readPiece(framer, input.substr(at, end - at), frames); // a piece lives as long as its frames only
    }
    return frames;
}

void expectFrames(const KxSipFramer& framer, const std::string& input, const std::string& frames) {
    SCOPED_TRACE(testing::PrintToString(input));
    EXPECT_EQ(framesOf(framer, input, input.size(), 1), frames);
    EXPECT_EQ(framesOf(framer, input, 1, 1), frames);
    for (std::size_t cut = 1; cut < input.size(); ++cut) {
        ASSERT_EQ(framesOf(framer, input, cut, input.size()), frames) << "cut at " << cut;
    }
}

} // namespace

TEST(FramerTest, EveryCutGivesTheSameFrames) {
    const std::string empty = kStart + "l:0\r\n\r\n";
    const char* const bodies[] = {
        // what follows the start line, of which the last three bytes are the body
        "Via: SIP/2.0/TCP h\r\nContent-Length: 3\r\n\r\nabc",
        "CONTENT-length  :\r\n\t 3 \r\n\r\n\r\n\r",
        "l: 3\r\nX: \r\nL: 003\r\n\r\n\nl:",
        "l: 3\n\nabc",
        "X: a\r\n l: 9\r\nl: 3\r\n\r\rX: a\r\n\r\r\nabc",
        " l: 3\r\n \r\n\t\r\n\r\nabc", // blanks before the name; lines of blanks belong to the header
        "no colon\r\n:\r\n l: 3\r\n:\r\nContent-Lengthy: 1\r\n\r\nabc",
    };
    for (const std::string text : bodies) {
        const std::string message = kStart + text;
        expectFrames(KxSipFramer(), message + empty, "[" + message + "][" + empty + "]");
        expectFrames(KxSipFramer(Mode::Stream, {message.size() - 3, 3}), message, "[" + message + "]");
        KxByteArrayInputStream in(message); // the parser finds the same end
        static_cast<void>(outcomeOf([&in] { KxSipMessage::sConstructFrom(in); }));
        EXPECT_EQ(in.available(), 0U) << text;
    }
    const std::string nul = kStart + "X\0: \0\r\nl: 1\r\n\r\n\0"s;
    expectFrames(KxSipFramer(), nul + nul, "[" + nul + "][" + nul + "]");
    for (const std::string between : {"", "\r\n", "\n", "\r\n\r", "\n\n\n", "\r\n\r\r\n\n"}) {
        expectFrames(KxSipFramer(), between + empty + between + empty, "[" + empty + "][" + empty + "]");
    }
    expectFrames(KxSipFramer(), "\r\r\n\r\n\r\n" + empty + "\r\n\r\n\r\n\r\n", "ping[" + empty + "]pingping");
    KxSipFramer pinging;
    expectFrames(pinging, "\r\n", ""); // it may be half of a ping
    std::string frames;
    readPiece(pinging, "\r\n", frames);
    pinging.expectPong();
    expectFrames(pinging, empty + "\r\n\r\n\r\n\r\n", "[" + empty + "]pongping");
}

TEST(FramerTest, WhatCannotBeFramed) {
    const auto sized = [](std::size_t size) { return KxSipFramer(Mode::Stream, {size, 5}); };
    struct Row {
        std::string headers;
        std::string error;
    };
    const Row rows[] = {
        {"X: 1\r\n\r\n", "Content-Length is missing"},
        {"l: 5\r\nContent-Length: 4\r\n\r\n", "Content-Length occurs with different values"},
        {"l: 5\r\nl: -5\r\n\r\n", "Content-Length is not a number"},
        {"l: 5;a\r\n\r\n", "Content-Length is not a number"},
        {"l: 5, 5\r\n\r\n", "Content-Length is not a number"},
        {"l: 5\r\nl:\r\n\r\n", "Content-Length is not a number"},
        {"l: 0x5\r\n\r\n", "Content-Length is not a number"},
        {"l: 6\r\n\r\n", "the body is too large"},
        {"l: 18446744073709551616\r\n\r\n", "the body is too large"},
    };
    for (const Row& row : rows) {
        const std::string section = kStart + row.headers;
        expectFrames(sized(section.size()), section + kStart, "!" + row.error + ": " + section);
        const auto kept = section.substr(0, section.size() - 1);
        expectFrames(sized(kept.size()), section, "!the header section is too large: " + kept);
    }
    KxSipFramer framer(Mode::Stream, {100, SIZE_MAX});
    const KxSipFramer::Frame frame = framer.next(kStart + "l: 4294967295\r\n\r\n" + kStart);
    EXPECT_EQ(frame.consumed, kStart.size() + 17); // what follows the header section is left
    for (const std::string input : {"", "\r\n\r\n", "OPTIONS"}) {
        const KxSipFramer::Frame again = framer.next(input);
        EXPECT_TRUE(again.error == frame.error && again.bytes.empty() && again.consumed == input.size());
    }
    framer.reset();
    EXPECT_EQ(framer.next("\r\n\r\n").kind, Kind::Ping);
}

TEST(FramerTest, MessagesInUnits) {
    const std::string tooLarge = "!the body is too large: ";
    const std::string truncated = "!the message ends too early: ";
    const std::pair<std::string, std::string> rows[] = {
        {"X: a\r\n\r\nabc", "[X: a\r\n\r\nabc]"},
        {"\r\nX: a\r\nl: 2\r\n\r\nabc", "[X: a\r\nl: 2\r\n\r\nab]"},
        {"\r\n\r\n", "ping"},
        {"\r\n", "pong"},
        {"\r\n\r\n\r\n", ""},
        {"X: a\r\n\r\nabcd", tooLarge + "X: a\r\n\r\n"},
        {"X\r\nl: 3\r\n\r\nab", truncated + "X\r\nl: 3\r\n\r\n"},
        {"X: a\r\n", truncated + "X: a\r\n"},
        {"X\r\nl: a\r\n\r\n", "!Content-Length is not a number: X\r\nl: a\r\n\r\n"},
        {"X: 890123456789012345", "!the header section is too large: X: 89012345678901234"},
    };
    KxSipFramer framer(Mode::Messages, {20, 3}); // goes on after each error
    for (const auto& [input, frames] : rows) {
        std::string found;
        readPiece(framer, input, found);
        EXPECT_EQ(found, frames);
    }
}

TEST(FramerTest, KeepsOnlyWhatIsUnfinished) {
    const std::string body(kStart.size() * 100, 'b');
    const std::string message = kStart + "l: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    const std::string input = message + message + kStart;
    KxSipFramer framer;
    EXPECT_EQ(framer.next(input).bytes.data(), input.data()); // not copied
    EXPECT_EQ(framer.next(std::string_view(input).substr(message.size())).bytes.data(), input.data() + message.size());
    EXPECT_EQ(framer.pending(), "");
    EXPECT_EQ(framer.next(kStart).kind, Kind::Incomplete);
    EXPECT_EQ(framer.pending(), kStart);
    // without memory nothing is consumed
    const std::string rest = "X:" + times("\r\n folded", 50) + "\r\n" + message.substr(kStart.size());
    std::string bytes;
    std::uint64_t faults = 0;
    for (; bytes.empty() && faults < 99; ++faults) {
        try {
            Oskan::MemAllocatorFaults::sFailAfter(faults + 1);
            const KxSipFramer::Frame frame = framer.next(rest);
            Oskan::MemAllocatorFaults::sDisarm();
            bytes = frame.bytes;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(framer.pending(), kStart);
        }
    }
    EXPECT_TRUE(faults > 1 && bytes == kStart + rest) << faults;
}

TEST(FramerTest, HostileStreamsTakeLinearTime) {
    constexpr std::size_t kSize = (std::size_t{1} << 20) / kShrink;
    const std::string inputs[] = {kStart + std::string(kSize, 'x'), std::string(kSize, ' '),
                                  kStart + times("l: 1\r\n", kSize / 6) + "\r\nb",
                                  kStart + "l: " + std::to_string(kSize) + "\r\n\r\n" + std::string(kSize, '\n'),
                                  kStart + std::string(kSize, '\r')};
    for (const std::string& input : inputs) {
        KxSipFramer framer(Mode::Stream, {2 * kSize, 2 * kSize});
        std::size_t moves = 0;
        const char* kept = nullptr;
        for (const char c : input) {
            static_cast<void>(framer.next({&c, 1}));
            moves += std::exchange(kept, framer.pending().data()) != framer.pending().data();
        }
        EXPECT_LT(moves, 40U); // each at least doubles the room
    }
    EXPECT_EQ(framesOf(KxSipFramer(), times("\r\n\r\n", kSize / 4), 1, 1), times("ping", kSize / 4));
}
