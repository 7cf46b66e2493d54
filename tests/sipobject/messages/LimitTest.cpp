// Messages that are far larger than any in use; each is read, copied, written and destroyed on a small stack.

#include "tests/sipobject/support/MessageSupport.h"

constexpr std::size_t kMega = (std::size_t{1} << 20) / kShrink;
constexpr std::size_t kMillion = 1000000 / kShrink;

/** Pieces with a number after each, so that no two are equal. */
static std::string numbered(std::size_t count, std::string_view piece) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text.append(piece).append(std::to_string(i));
    }
    return text;
}

static std::string message(std::string_view start, std::string_view headers, std::string_view body) {
    const std::string content = "Content-Type: a/b\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    const std::string fixed = "\r\n" + requiredHeaders("OPTIONS");
    return std::string(start).append(fixed).append(headers).append(content).append(body);
}

static std::string withHeaders(std::string_view headers) {
    return message("OPTIONS sip:h SIP/2.0", headers, "");
}

static std::string withLine(std::string_view name, std::string_view value) {
    return withHeaders(std::string(name).append(": ").append(value).append("\r\n"));
}

/** Half of it in headers, half in the body. */
static std::string ofSize(std::size_t size) {
    constexpr std::string_view kLines = "X-A: some text that nobody knows a grammar of\r\nRoute: <sip:proxy.example.com"
                                        ";lr>\r\nSupported: 100rel\r\nContact: \"A\" <sip:a@192.0.2.1>;q=0.5\r\n";
    return message("OPTIONS sip:h SIP/2.0", repeated(kLines, size / 2 / kLines.size()), std::string(size / 2, '\0'));
}

TEST(LimitTest, LargeMessagesOnASmallStack) {
    const std::tuple<const char*, std::string (*)(), int> rows[] = {
        {"64 MB", [] { return ofSize(64 * kMega); }, 0},
        {"a million tags", [] { return withLine("Supported", repeated("a,", kMillion) + "a"); }, 0},
        {"a million of a host's kind", [] { return withHeaders(repeated("X-Kx-Level: 1\r\n", kMillion)); }, 0},
        {"a million Vias", [] { return withLine("Via", repeated("SIP/2.0/UDP h,", kMillion) + "SIP/2.0/UDP h"); }, 0},
        {"a million addresses", [] { return withLine("Route", repeated("<sip:h>,", kMillion) + "<sip:h>"); }, 0},
        {"a million bad lines", [] { return withHeaders(repeated("x\r\n", kMillion)); }, 1},
        {"a million empty values", [] { return withLine("Accept", repeated(",", kMillion)); }, 1},
        {"a million parameters", [] { return withLine("Contact", "<sip:h>" + numbered(kMillion, ";p")); }, 0},
        {"a million URL parameters", [] { return withLine("Route", "<sip:h" + numbered(kMillion, ";p") + ">"); }, 0},
        // the search for the end of a value must not be repeated
        {"a million bare addresses", [] { return withLine("Contact", repeated("sip:a,", kMillion) + "sip:h"); }, 0},
        {"a million quotes", [] { return withLine("Contact", repeated("sip:a\",", kMillion) + "sip:h"); }, 0},
        {"a million quoted commas",
         [] { return withLine("Contact", repeated("<sip:a;b>;c=\",\",", kMillion) + "sip:h"); }, 0},
        {"a million Via parameters twice",
         [] { return withLine("Via", "SIP/2.0/UDP h" + repeated(numbered(kMillion, ";p"), 2)); }, 0},
        {"16 MB of folds", [] { return withLine("Subject", repeated("x\r\n ", 4 * kMega) + "x"); }, 0},
        {"16 MB of quotes", [] { return withLine("X-A", repeated("\\\"", 8 * kMega)); }, 0},
        {"16 MB of display name", [] { return withLine("Contact", '"' + std::string(16 * kMega, 'x') + "\" <sip:h>"); },
         1},
        {"16 MB of realm",
         [] { return withLine("Proxy-Authenticate", "Digest realm=\"" + std::string(16 * kMega, 'x') + '"'); }, 1},
        {"16 MB of URI", [] { return message("OPTIONS sip:" + std::string(16 * kMega, 'x') + " SIP/2.0", "", ""); }, 0},
    };
    for (const auto& row : rows) {
        onSmallStack([&row] {
            const Balance balance;
            const auto& [name, make, status] = row;
            const std::string text = make();
            const KxHandle<KxSipMessage> message = readMessage(text);
            const std::string once = written(*message);
            if (!isRFC()) {
                EXPECT_EQ(message->getStatus(), status) << name;
                EXPECT_TRUE(status != 0 || once.size() * 5 > text.size()) << name << ' ' << once.size();
            }
            const KxHandle<KxSipMessage> copy = copyOf(*message);
            EXPECT_TRUE(written(*copy) == once) << name;
            for (const char* header : {"Route", "x-b", "Via", "Supported"}) {
                copy->removeHeader(header);
            }
            EXPECT_TRUE(written(*readMessage(once)) == once) << name;
        });
    }
}

TEST(LimitTest, EditsOfAMillionHeadersByName) {
    constexpr std::size_t kNames = kMillion / 2;
    std::string headers;
    for (std::size_t i = 0; i < 2 * kNames; ++i) {
        headers.append("X-").append(std::to_string(i % kNames)).append(": 1\r\n");
    }
    const KxHandle<KxSipMessage> message = readMessage(withHeaders(headers));
    for (std::size_t i = 0; i < kNames; ++i) {
        const std::string name = "x-" + std::to_string(i);
        ASSERT_EQ(std::ranges::distance(message->valuesNamed(name)), 2);
        ASSERT_EQ(message->removeAllNamed("Via-" + name), 0U);
        ASSERT_EQ(i % 3 == 0 ? message->removeAllNamed(name) : 2, 2U);
    }
}
