#include "sipobject/messages/KxSipRequest.h"
#include "tests/core/LogCapture.h"
#include "tests/sipobject/support/MessageSupport.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <atomic>
#include <cstddef>
#include <stdexcept>

#ifdef KX_PLAIN_MALLOC
/** Of the sanitizers' run time; g++ brings no header for it. */
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));
#endif

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string request(std::string_view headers) {
    return "OPTIONS sip:h SIP/2.0\r\n" + requiredHeaders("OPTIONS") + std::string(headers);
}

/** Breaks off: whoever reads on gets an error that is not of this library, again and again. */
class BrokenStream final : public KxInputStream {
public:
    BrokenStream(std::string_view text, std::size_t length) : m_left(text.substr(0, length)) {}

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override {
        if (m_left.empty()) {
            throw std::runtime_error("broken");
        }
        const std::size_t count = m_left.copy(buffer, std::min<std::size_t>(capacity, 5));
        m_left.remove_prefix(count);
        return count;
    }

private:
    std::string_view m_left;
};

/** Messages with a dump beside each: those of this library's own quirks, and those of everybody's [RFC 4475, 5118]. */
std::vector<std::filesystem::path> goldenFiles() {
    std::vector<std::filesystem::path> files = filesOf("tests/messages", ".sip");
    std::ranges::copy(filesOf("tests/messages/torture", ".sip"), std::back_inserter(files));
    return files;
}

/** Messages one behind the other, as they are written; nothing for what is refused. */
std::vector<std::string> writtenMessages(std::string_view text) {
    std::vector<std::string> messages;
    const HeapText bytes(text);
    KxByteArrayInputStream in(bytes.view());
    while (in.peek() >= 0) {
        const std::string outcome = outcomeOf([&in] { return written(*KxSipMessage::sConstructFrom(in)); });
        if (outcome.find("\r\n") == std::string::npos) {
            break;
        }
        messages.push_back(outcome);
    }
    return messages;
}

#ifdef KX_PLAIN_MALLOC
std::atomic<std::size_t> s_largest{0};

void noteSize(const volatile void*, std::size_t size) {
    std::size_t largest = s_largest.load();
    while (size > largest && !s_largest.compare_exchange_weak(largest, size)) {
    }
}
void noteNothing(const volatile void*) {}
#endif

/** Expects that f makes no allocation of a gigabyte: the sanitizers' allocator tells; elsewhere there is no room. */
template <class F>
void withoutHugeAllocation(F f) {
#ifdef KX_PLAIN_MALLOC
    static const int installed = __sanitizer_install_malloc_and_free_hooks(&noteSize, &noteNothing);
    ASSERT_NE(installed, 0);
    s_largest = 0;
    f();
    EXPECT_LT(s_largest.load(), std::size_t{1} << 20);
#else
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    std::size_t pages = 0;
    ASSERT_TRUE(std::ifstream("/proc/self/statm") >> pages);
    const rlimit narrow{pages * 4096 + (rlim_t{1} << 30), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &narrow), 0);
    f();
    setrlimit(RLIMIT_AS, &before);
#endif
}

} // namespace

/** KX_WRITE_DUMPS=1 writes the expected dumps anew, to be looked at before they are committed. */
TEST(MessageParseTest, GoldenMessages) {
    for (const std::filesystem::path& path : goldenFiles()) {
        const Reading reading = readAnyhow(fileText(path), readDump);
        std::string dump = reading.result + (reading.result.back() == '\n' ? "" : "\n");
        if (!reading.rest.empty()) {
            dump += "unread " + std::to_string(reading.rest.size()) + ": " + escaped(reading.rest) + '\n';
        }
        const std::filesystem::path expected = std::filesystem::path(path).replace_extension(".dump");
        if (std::getenv("KX_WRITE_DUMPS") != nullptr) {
            std::ofstream(expected, std::ios::binary) << dump;
        }
        EXPECT_EQ(dump, fileText(expected)) << path;
    }
}

TEST(MessageParseTest, SecondRoundIsIdentical) {
    std::size_t rounds = 0;
    for (const char* folder : {"samples", "tests/messages"}) {
        for (const std::filesystem::path& path : filesOf(folder, ".sip")) {
            for (const std::string& text : writtenMessages(fileText(path))) {
                EXPECT_THAT(writtenMessages(text), ElementsAre(text)) << path;
                const KxHandle<KxSipMessage> message = readMessage(text);
                const KxHandle<KxSipMessage> copy(static_cast<KxSipMessage*>(message->clone()));
                EXPECT_EQ(headersOf(*copy), headersOf(*message)) << path;
                EXPECT_EQ(written(*copy), text) << path;
                ++rounds;
            }
        }
    }
    EXPECT_GT(rounds, 25U);
}

TEST(MessageParseTest, Refuses) {
    const char* const kKeepAlive = "KxSipParseKeepAliveException: Keep-alive datagram encountered";
    const char* const kNoToken = "KxSipParseError: SIP Method Token Expected";
    const char* const kShort = "KxSipParseError: message body is shorter than Content-Length";
    const struct {
        std::string text;
        const char* result;
        const char* rest;
    } rows[] = {
        {"", kNoToken, ""},
        {"\r\n\r\n", kKeepAlive, "\r\n\r\n"},
        {"\n", kKeepAlive, "\n"},
        {" OPTIONS sip:h SIP/2.0", kKeepAlive, " OPTIONS sip:h SIP/2.0"},
        {"\tx", kKeepAlive, "\tx"},
        {"/2.0", kKeepAlive, "/2.0"},
        {request("Content-Length: 10\r\n\r\nfour"), kShort, "four"},
        {request("Content-Length: 1\r\n\r\n"), kShort, ""},
        {request("Content-Length: 2\r\nContent-Length: 1\r\n\r\nx"), kShort, "x"},
        {"OPTIONS/sip:h SIP/2.0\r\n\r\n", "KxSipParseError: Unsupported Uri Scheme",
         "\r\n"}, // the token ends at a slash too
    };
    for (const auto& row : rows) {
        const Balance balance;
        EXPECT_EQ(readAnyhow(row.text, readDump), (Reading{row.result, row.rest})) << row.text;
    }
}

TEST(MessageParseTest, BodiesEndWhereContentLengthSays) {
    const struct {
        const char* text;
        const char* dump;
        const char* rest;
    } rows[] = {
        {"Content-Length: 4\r\n\r\nfourmore", "Content-Length: 4\nbody 4: four\n", "more"},
        {"Content-Length: 0\r\n\r\nmore", "Content-Length: 0\n", "more"},
        {"Content-Length: 4x\r\n\r\nfourmore", "Content-Length: 4\nbody 4: four\n", "more"},
        {"l: 4\nContent-Length: 1\n\nfourmore", "l: 4\nContent-Length: 1\nbody 4: four\n", "more"},
        {"\r\nseven\r\n", "Content-Length: 7\nbody 7: seven\\r\\n\n", ""},
        {"\r\n", "Content-Length: 0\n", ""},
        {"", "Content-Length: 0\n", ""},
        {"X-A: 1", "X-A: 1\nContent-Length: 0\n", ""},
        {"X-A: 1\r\n\r\r\r\nx", "X-A: 1\nContent-Length: 1\nbody 1: x\n", ""},
    };
    for (const auto& row : rows) {
        // the line without a colon makes the status 1, and nothing is asked of the message as a whole
        Reading reading = readAnyhow("MESSAGE sip:h SIP/2.0\r\nno colon\r\n" + std::string(row.text), readDump);
        for (const char* name : {"KxSipUnknownHeader ", "KxSipContentLengthHeader "}) {
            for (std::size_t at = 0; (at = reading.result.find(name)) != std::string::npos;) {
                reading.result.erase(at, std::string_view(name).size());
            }
        }
        EXPECT_EQ(reading, (Reading{"MESSAGE sip:h SIP/2.0\nstatus 1\n" + std::string(row.dump), row.rest}))
            << row.text;
    }
}

TEST(MessageParseTest, NegativeLengthsAreNoLengths) {
    const Reading reading = readAnyhow(request("Content-Length: -1\r\n\r\nx"), readDump);
    EXPECT_THAT(reading.result, Not(HasSubstr("body")));
    EXPECT_EQ(reading.rest, "x");
}

TEST(MessageParseTest, HugeLengthsAllocateNothing) {
    const std::string text = request("Content-Length: 4294967295\r\n\r\n");
    for (const bool whole : {true, false}) {
        withoutHugeAllocation([&] {
            const Balance balance;
            DribblingStream slow(text, 64);
            KxByteArrayInputStream memory{std::string_view(text)};
            KxInputStream& in = whole ? static_cast<KxInputStream&>(memory) : slow;
            EXPECT_EQ(readDump(in), "KxSipParseError: message body is shorter than Content-Length");
        });
    }
}

TEST(MessageParseTest, NotesWhatItDropsAndRefuses) {
    log4cplus::Logger logger = log4cplus::Logger::getInstance("tandril.kx.KxSipMessage");
    LogCapture capture(logger);
    logger.setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
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
    DribblingStream failing("OPTIONS sip:h SIP/2.0\r\nX-A: 1\r\n\r\n", 7, true, 31);
    const std::string dump = readDump(failing);
    EXPECT_THAT(dump, HasSubstr("status"));
    EXPECT_THAT(capture.texts(), Contains(HasSubstr("connection lost")));
}

/** A stream that fails: the start line goes with it; later on what was read stands, and says that it is not all. */
TEST(MessageParseTest, FailingStreams) {
    log4cplus::Logger logger = log4cplus::Logger::getInstance("tandril.kx.KxSipMessage");
    LogCapture capture(logger);
    logger.setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
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
            if (dump != "KxException: connection lost" && dump != usual) {
                ASSERT_THAT(dump, AnyOf(HasSubstr("\nstatus 1\n"), HasSubstr("\nstatus 2\n"), StartsWith("Kx")))
                    << path << " failing at " << at;
                unusable += dump.find("\nstatus 2\n") != std::string::npos ? 1 : 0;
            }
            BrokenStream broken(text, at);
            ASSERT_THAT(readDump(broken), AnyOf("std::runtime_error: broken", usual)) << path << " broken at " << at;
        }
    }
    EXPECT_GT(unusable, 0U);
    EXPECT_THAT(capture.texts(), Contains("Exception occurred while parsing headers of message: connection lost"));
}
