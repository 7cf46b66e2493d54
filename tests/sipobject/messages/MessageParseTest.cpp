#include "tests/sipobject/support/MessageSupport.h"

#include <sys/resource.h>

using namespace testing;

static std::string request(std::string_view headers) {
    return "OPTIONS sip:h SIP/2.0\r\n" + requiredHeaders("OPTIONS") + std::string(headers);
}

static std::string readWritten(KxInputStream& in) {
    return written(*KxSipMessage::sConstructFrom(in));
}

/** Messages with the expected dump in a file next to each: NAME.dump, and NAME.rfc.dump if that of the RFC grammar is
    another. Those of RFC 4475 and 5118 are in the folder "torture". KX_WRITE_DUMPS=1, which the target update_expected
    sets, writes the expected dumps of the grammar again; check them before you commit them. */
TEST(MessageParseTest, GoldenMessages) {
    std::vector<std::filesystem::path> files = filesOf("tests/messages", ".sip");
    std::ranges::copy(filesOf("tests/messages/torture", ".sip"), std::back_inserter(files));
    for (const std::filesystem::path& path : files) {
        const std::string dump = readEveryWay(fileText(path), [](KxInputStream& in) {
            std::string result = readDump(in);
            result += result.back() == '\n' ? "" : "\n";
            const std::string rest = readRest(in);
            return result + (rest.empty() ? "" : "unread " + std::to_string(rest.size()) + ": " + escaped(rest) + '\n');
        });
        const bool isWriting = std::getenv("KX_WRITE_DUMPS") != nullptr;
        std::filesystem::path expected = std::filesystem::path(path).replace_extension(".dump");
        const std::filesystem::path other = std::filesystem::path(path).replace_extension(".rfc.dump");
        if (isRFC() && (isWriting ? dump != fileText(expected) + "@" : std::filesystem::exists(other))) {
            expected = other;
        } else if (isRFC() && isWriting) {
            std::filesystem::remove(other);
        }
        if (isWriting) {
            std::ofstream(expected, std::ios::binary) << dump.substr(0, dump.size() - 1);
        }
        EXPECT_EQ(dump, fileText(expected) + "@") << path;
    }
}

TEST(MessageParseTest, SecondRoundIsIdentical) {
    for (const char* folder : {"samples", "tests/messages"}) {
        const std::vector<std::string> messages = messagesOf(folder);
        EXPECT_GT(messages.size(), 10U);
        for (const std::string& message : messages) {
            const KxHandle<KxSipMessage> first = readMessage(message);
            const std::string text = written(*first);
            EXPECT_EQ(readEveryWay(text, readWritten), text + "@");
            EXPECT_EQ(headersOf(*copyOf(*first)), headersOf(*first));
            EXPECT_EQ(written(*copyOf(*first)), text);
        }
    }
}

TEST(MessageParseTest, Refuses) {
    const char* const kKeepAlive = "KxSipParseKeepAliveException: Keep-alive datagram encountered";
    const char* const kShort = "KxSipParseError: message body is shorter than Content-Length";
    constexpr auto read = [](KxInputStream& in) {
        const Balance balance;
        return readDump(in);
    };
    expectReads<read>({
        {"", "KxSipParseError: SIP Method Token Expected"},
        {"\tx", kKeepAlive, "\tx"},
        {std::string("\0x y", 4), kKeepAlive, " y"},
        {"/2.0", kKeepAlive, "/2.0"},
        {request("Content-Length: 2\r\nContent-Length: 1\r\n\r\nx"), kShort, "x"},
        // the token ends at a slash too
        {"OPTIONS/sip:h SIP/2.0\r\n\r\n", "KxSipParseError: Unsupported Uri Scheme", "\r\n"},
    });
}

TEST(MessageParseTest, BodiesEndWhereContentLengthSays) {
    // a message of which a line was dropped is not checked
    const std::string start = "MESSAGE sip:h SIP/2.0\r\nno colon\r\n";
    constexpr auto read = [](KxInputStream& in) { return readWritten(in).substr(23); }; // after the start line
    expectReads<read>({
        {start + "Content-Length: 4x\r\n\r\nfourmore", "Content-Length: 4\r\n\r\nfour", "more"},
        {start + "Content-Length: -1\r\n\r\nx", "Content-Length: 0\r\n\r\n", "x"},
        {start + "l: 4\nContent-Length: 1\n\nfourmore", "l: 4\r\nContent-Length: 1\r\n\r\nfour", "more"},
        {start + "\r\nseven\r\n", "Content-Length: 7\r\n\r\nseven\r\n"},
        {start, "Content-Length: 0\r\n\r\n"},
        {start + "X-A: 1", "X-A: 1\r\nContent-Length: 0\r\n\r\n"},
        {start + "X-A: 1\r\n\r\r\r\nx", "X-A: 1\r\nContent-Length: 1\r\n\r\nx"},
    });
}

#ifndef KX_PLAIN_MALLOC // the sanitizers need more address space than the limit leaves
TEST(MessageParseTest, HugeLengthsAllocateNothing) {
    const std::string length = isRFC() ? "2147483647" : "4294967295";
    const std::string text = request("Content-Length: " + length + "\r\n\r\n");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    std::size_t pages = 0;
    ASSERT_TRUE(std::ifstream("/proc/self/statm") >> pages);
    const rlimit narrow{pages * 4096 + (rlim_t{1} << 30), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &narrow), 0);
    EXPECT_EQ(readEveryWay(text, readDump), "KxSipParseError: message body is shorter than Content-Length@");
    setrlimit(RLIMIT_AS, &before);
}
#endif

TEST(MessageParseTest, NotesWhatItDropsAndRefuses) {
    ClassLog capture("tandril.kx.KxSipMessage");
    const auto said = [&capture](std::string_view text) {
        const HeapText bytes(text);
        KxByteArrayInputStream in(bytes.view());
        readDump(in);
        return capture.texts();
    };
    const std::string kCaught = "Caught KxException from KxSipHeader::sConstructFrom(): ";
    EXPECT_THAT(
        said("\r\n"),
        ElementsAre("KxSipMessage::sConstructFrom : datagram starting with whitespace: treating as keep-alive "));
    EXPECT_THAT(said(request("no colon\r\n:\r\nX-A:\r\nCSeq: 1\r\nContent-Length: 0\r\n\r\n")),
                ElementsAre(kCaught + "SIP Header parse error : no colon found", kCaught + "Header token expected",
                            kCaught + "SIP Header parse error : nothing after the colon",
                            kCaught + "Invalid CSeq header"));
    EXPECT_THAT(said(request("Content-Length: 1\r\n\r\n")),
                Contains("KxException Occurred while parsing body of message: message body is shorter than "
                         "Content-Length"));
}

/** If the stream fails in the start line, the message is refused; after it, the message keeps what was read. */
TEST(MessageParseTest, FailingStreams) {
    ClassLog capture("tandril.kx.KxSipMessage");
    std::size_t unusable = 0;
    for (const std::filesystem::path& path : filesOf("tests/messages", ".sip")) {
        const std::string text = fileText(path);
        DribblingStream healthy(text, 5);
        const std::string usual = readDump(healthy);
        const std::size_t needed = text.size() - readRest(healthy).size();
        for (std::size_t at = 0; at < needed; ++at) {
            const Balance balance;
            DribblingStream failing(text, 5, true, at);
            const std::string dump = readDump(failing);
            ASSERT_THAT(dump, AnyOf(usual, HasSubstr("\nstatus 1\n"), HasSubstr("\nstatus 2\n"), StartsWith("Kx")))
                << path << " failing at " << at;
            unusable += dump != usual && dump.find("\nstatus 2\n") != std::string::npos ? 1 : 0;
        }
    }
    EXPECT_GT(unusable, 0U);
    EXPECT_THAT(capture.texts(), Contains("Exception occurred while parsing headers of message: connection lost"));
}
