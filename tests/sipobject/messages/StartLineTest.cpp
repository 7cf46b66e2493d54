#include "tests/sipobject/support/MessageSupport.h"

namespace {

/** A request of which only the start line is checked. */
class BareRequest final : public OpenRequest {
protected:
    void checkValidity() override {}
};

/** The status, and the start line or the failure. The text begins after the method. */
std::string readRequest(KxInputStream& in) {
    BareRequest request;
    const std::string outcome = outcomeOf([&] {
        request.parse("INVITE", in);
        return startLineOf(request);
    });
    return std::to_string(request.getStatus()) + ' ' + outcome;
}

} // namespace

TEST(StartLineTest, Requests) {
    const char* const kNoEnd =
        "2 KxSipParseError: Invalid Start-Line for SIP request: reached end of message looking for "
        "end-of-line";
    const char* const kNoCR = "2 KxSipParseError: Invalid Start-Line for SIP request: no CR before LF";
    const char* const kSpaces = "2 KxSipParseError: Invalid Start-Line for SIP request: does not contain 1 or 2 spaces";
    const char* const kScheme = "416 KxSipParseError: Unsupported Uri Scheme";
    const std::string longest = "tel:" + std::string(1018, '1') + " SIP/2.0";
    expectReads<readRequest>({
        {" sip:u1 SIP/2.0\r\n\r\n", "0 INVITE sip:u1 SIP/2.0"},
        {"sip:u1 SIP/2.0\r\n\r\n", "0 INVITE sip:u1 SIP/2.0"},
        {" SIP:a@h;lr;a=1,2 SIP/2.0\r\n", "0 INVITE sip:a@h;lr;a=1,2 SIP/2.0"},
        {" <sip:u1;a>;b SIP/2.0\r\n", "0 INVITE sip:u1;a SIP/2.0"},
        {"", kNoEnd},
        {"\n", kNoCR},
        {" sip:u1 SIP/2.0\nVia: x", kNoCR, "Via: x"},
        {"\r\nVia: x", kSpaces, "Via: x"},
        {"sip:u1\r\n", kSpaces},
        {" sip:u1  SIP/2.0\r\n", kSpaces},
        {"sip:u 1 SIP/2.0\r\n", kSpaces},
        {" SIP/2.0\r\n", "2 KxSipParseError: Invalid Start-Line for SIP request"},
        {" sip:u1 SIP/2.00\r\n", "2 KxSipParseError: Invalid SIP Version"},
        {" sips:u1 SIP/3.0\r\n", "505 KxSipParseError: Invalid SIP Version"}, // the version is checked first
        {" <SIPS:u1> SIP/2.0\r\n", kScheme},
        {" sipx:@ SIP/2.0\r\n", kScheme},
        {" <<sip:u1> SIP/2.0\r\n", kScheme},
        {"  SIP/2.0\r\n", "2 KxException: INVALID URI"},
        {" sipx SIP/2.0\r\n", "2 KxSipParseError: Sip URL wrong format"},
        {" sip:h? SIP/2.0\r\n", "2 KxSipParseError: SIP URL Header doesn't have Key/Value pair (1)\n"},
        {" " + longest + "\r\n", "0 INVITE " + longest},
        {" tel:11" + longest.substr(4) + "\r\n", "2 KxSipParseError: Invalid TelURL"},
        {" sip:u1?Via=x SIP/2.0\r\n", "2 KxSipParseError: Invalid Via header, no transport"},
        {" sip:u1?a%3Ab=x SIP/2.0\r\n", "2 KxSipParseError: Header token expected"},
    });
}

TEST(StartLineTest, HeadersOfTheRequestURIBecomeTheRequests) {
    const std::pair<std::string, std::string> rows[] = {
        {"sip:u1?BODY=a%20b%0d%3d;X-A=1 SIP/2.0\r\n\r\n", "sip:u1 SIP/2.0\r\nContent-Length: 3\r\nX-A: 1\r\n\r\nab="},
        {"sip:u1;lr?body=\"a%20b%2C%3d\" SIP/2.0\r\n\r\n", "sip:u1;lr SIP/2.0\r\nContent-Length: 7\r\n\r\n\"a b,=\""},
        {"<sip:u1?Supported=100rel,timer;x-a=1,2;k=z;X-A=3> SIP/2.0\r\nSupported: own\r\nX-A: own\r\n\r\n",
         "sip:u1 SIP/2.0\r\nx-a: 3\r\nX-A: own\r\nSupported: z\r\nSupported: own\r\nContent-Length: 0\r\n\r\n"},
    };
    for (const auto& [text, expected] : rows) {
        BareRequest request;
        const HeapText bytes(" " + text);
        KxByteArrayInputStream in(bytes.view());
        request.parse("INVITE", in);
        EXPECT_EQ(written(request), "INVITE " + expected);
    }
}

TEST(StartLineTest, SetURIKeepsACopyWithoutBrackets) {
    BareRequest request;
    KxByteArrayInputStream in(std::string_view(" sip:u1 SIP/2.0\r\n"));
    request.parse("INVITE", in);
    auto uri = KxMake<KxURI>(nullptr);
    uri->parse("<<urn:a<b");
    request.setURI(uri);
    EXPECT_EQ(request.getURI()->getString(), "urn:ab");
    EXPECT_EQ(uri->getString(), "<urn:a<b");
    request.setURI({});
    EXPECT_EQ(startLineOf(request), "Content-Length: 0"); // a request without a URI has no start line to write
}

TEST(StartLineTest, Responses) {
    const std::string kLong(127, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"SIP/2.0 200 OK\n", "SIP/2.0 200 OK"},
        {"SIP/2.0 200 \r \tA\rB\r\n", "SIP/2.0 200 AB"},
        {"SIP/2.0 404 \t Not  Found \r\n", "SIP/2.0 404 Not  Found "},
        {"SIP 7.10 99999 Odd\r\n", "SIP/7.10 99999 Odd"}, // neither the slash nor the numbers are checked
        {"SIP/257.256 200 OK\r\n", "SIP/1.0 200 OK"},
        {"SIP/2.0 OK\r\n", "SIP/2.0 0 OK"},
        {"SIP/2.0 200 " + kLong + "\r\n", "SIP/2.0 200 " + kLong},
        {"SIP/2.0 200 " + kLong + "x\r\n", "KxSipParseError: unexpected end of response start line"},
        {"SIP\r\n", "KxSipParseError: '.' expected in response start line"},
    };
    for (const auto& [line, result] : rows) {
        const std::string text = line + requiredHeaders("INVITE") + "Content-Length: 0\r\n\r\n";
        const std::string dump = readEveryWay(text, readDump);
        EXPECT_EQ(dump.substr(0, dump.find_first_of(dump.starts_with("Kx") ? "@" : "\n")), result) << line;
    }
    EXPECT_THROW(readMessage("SIP/2.0 200"), KxHandle<KxSipParseError>);
}

/** A CR within a line must not be written: another peer may read it as a line end. */
TEST(StartLineTest, NoReturnIsWrittenButThatOfALineEnd) {
    std::size_t read = 0;
    for (const std::string line :
         {"OPTIONS sip:\"u\":p@h:5;a=b?X-A=\"c\" SIP/2.0", "OPTIONS tel:+1;a=b SIP/2.0", "SIP/2.0 200 All right"}) {
        for (std::size_t at = 0; at <= line.size(); ++at) {
            std::string text = line;
            text.insert(at, "\r").append("\r\n" + requiredHeaders("OPTIONS") + "\r\n");
            KxByteArrayInputStream in{std::string_view(text)};
            outcomeOf([&] {
                const std::string again = written(*KxSipMessage::sConstructFrom(in));
                const auto isAlone = [](char one, char next) { return one == '\r' && next != '\n'; };
                EXPECT_EQ(std::adjacent_find(again.begin(), again.end(), isAlone), again.end()) << escaped(again);
                ++read;
            });
        }
    }
    EXPECT_GT(read, 50U); // of 111; the others are refused
}
