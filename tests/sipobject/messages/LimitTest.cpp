// Messages that are far larger than any in use; each is read, copied, written and destroyed on a small stack.

#include "tests/sipobject/support/MessageSupport.h"

namespace {

constexpr std::size_t kMega = (std::size_t{1} << 20) / kShrink;
constexpr std::size_t kMillion = 1000000 / kShrink;

std::string times(std::size_t count, std::string_view piece) {
    std::string text;
    text.reserve(count * piece.size());
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

/** Pieces with a number after each, so that no two are equal. */
std::string numbered(std::size_t count, std::string_view piece) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text.append(piece).append(std::to_string(i));
    }
    return text;
}

std::string message(std::string_view start, std::string_view headers, std::string_view body) {
    const std::string content = "Content-Type: a/b\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    const std::string fixed = "\r\n" + requiredHeaders("OPTIONS");
    return std::string(start).append(fixed).append(headers).append(content).append(body);
}

std::string withHeaders(std::string_view headers) {
    return message("OPTIONS sip:h SIP/2.0", headers, "");
}

std::string withLine(std::string_view name, std::string_view value) {
    return withHeaders(std::string(name).append(": ").append(value).append("\r\n"));
}

/** Half of it in headers, half in the body. */
std::string ofSize(std::size_t size) {
    constexpr std::string_view kLines = "X-A: some text that nobody knows a grammar of\r\nRoute: <sip:proxy.example.com"
                                        ";lr>\r\nSupported: 100rel\r\nContact: \"A\" <sip:a@192.0.2.1>;q=0.5\r\n";
    return message("OPTIONS sip:h SIP/2.0", times(size / 2 / kLines.size(), kLines), std::string(size / 2, '\0'));
}

} // namespace

TEST(LimitTest, LargeMessagesOnASmallStack) {
    const struct {
        const char* name;
        std::string (*make)();
        int status;
    } rows[] = {
        {"64 MB", [] { return ofSize(64 * kMega); }, 0},
        {"a million tags", [] { return withLine("Supported", times(kMillion, "a,") + "a"); }, 0},
        {"a million Vias", [] { return withLine("Via", times(kMillion, "SIP/2.0/UDP h,") + "SIP/2.0/UDP h"); }, 0},
        {"a million addresses", [] { return withLine("Route", times(kMillion, "<sip:h>,") + "<sip:h>"); }, 0},
        {"a million bad lines", [] { return withHeaders(times(kMillion, "x\r\n")); }, 1},
        {"a million empty values", [] { return withLine("Accept", times(kMillion, ",")); }, 1},
        {"a million parameters", [] { return withLine("Contact", "<sip:h>" + numbered(kMillion, ";p")); }, 0},
        {"a million URL parameters", [] { return withLine("Route", "<sip:h" + numbered(kMillion, ";p") + ">"); }, 0},
        // the search for the end of a value must not be repeated
        {"a million bare addresses", [] { return withLine("Contact", times(kMillion, "sip:a,") + "sip:h"); }, 0},
        {"a million quotes", [] { return withLine("Contact", times(kMillion, "sip:a\",") + "sip:h"); }, 0},
        {"a million quoted commas", [] { return withLine("Contact", times(kMillion, "<sip:a;b>;c=\",\",") + "sip:h"); },
         0},
        {"a million Via parameters twice",
         [] { return withLine("Via", "SIP/2.0/UDP h" + times(2, numbered(kMillion, ";p"))); }, 0},
        {"16 MB of folds", [] { return withLine("Subject", times(4 * kMega, "x\r\n ") + "x"); }, 0},
        {"16 MB of quotes", [] { return withLine("X-A", times(8 * kMega, "\\\"")); }, 0},
        {"16 MB of display name", [] { return withLine("Contact", '"' + std::string(16 * kMega, 'x') + "\" <sip:h>"); },
         1},
        {"16 MB of realm",
         [] { return withLine("Proxy-Authenticate", "Digest realm=\"" + std::string(16 * kMega, 'x') + '"'); }, 1},
        {"16 MB of URI", [] { return message("OPTIONS sip:" + std::string(16 * kMega, 'x') + " SIP/2.0", "", ""); }, 0},
    };
    for (const auto& row : rows) {
        onSmallStack([&row] {
            const Balance balance;
            const std::string text = row.make();
            const KxHandle<KxSipMessage> message = readMessage(text);
            EXPECT_EQ(message->getStatus(), row.status) << row.name;
            const std::string once = written(*message);
            EXPECT_TRUE(row.status != 0 || once.size() * 5 > text.size()) << row.name << ' ' << once.size();
            const KxHandle<KxSipMessage> copy = copyOf(*message);
            EXPECT_TRUE(written(*copy) == once) << row.name;
            for (const char* name : {"Route", "x-b", "Via", "Supported"}) {
                copy->removeHeader(name);
            }
            EXPECT_TRUE(written(*readMessage(once)) == once) << row.name;
        });
    }
}
