#include "sipobject/messages/KxSipOptionsMessage.h"
#include "sipobject/messages/KxSipReading.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/MessageSupport.h"

/** The status and the text of the message that is read, which must be written the same when it is read again; or the
    error. */
static std::string readText(const std::string& text) {
    return outcomeOf([&] {
        const KxHandle<KxSipMessage> message = readMessage(text);
        const std::string again = written(*message);
        EXPECT_EQ(written(*readMessage(again)), again);
        return std::to_string(message->getStatus()) + ' ' + escaped(again);
    });
}

static std::string requestWith(const std::string& lines) {
    return "OPTIONS sip:b SIP/2.0\r\n" + requiredHeaders("OPTIONS") + lines + "\r\n";
}

TEST(RFCMessageTest, StartLines) {
    const std::string parse = "KxSipParseError: ";
    const std::pair<std::string, std::string> rows[] = {
        {"OPTIONS sip:b  SIP/2.0", parse + "Invalid Start-Line for SIP request: does not contain 1 or 2 spaces"},
        {"OPTIONS\tsip:b SIP/2.0", parse + "Invalid Start-Line for SIP request: does not contain 1 or 2 spaces"},
        {"sip/2.0 200 OK", "SIP/2.0 200 OK"},
        {"SIP/2.0 99 Odd", parse + "Invalid Response code"},
        {"SIP/2.0 700 Odd", parse + "Invalid Response code"},
        {"SIP/2.0 2x0 Odd", parse + "Invalid Response code"},
        {"SIP/2.0 200 " + std::string(300, 'x'), "SIP/2.0 200 " + std::string(300, 'x')},
    };
    for (const auto& [line, expected] : rows) {
        const std::string text = readText(line + "\r\n" + requiredHeaders("OPTIONS") + "\r\n");
        EXPECT_EQ(text.starts_with('0') ? text.substr(2, text.find("\\r\\n") - 2) : text, expected) << line;
    }
}

TEST(RFCMessageTest, WhatProxiesNeedIsNeverDropped) {
    const std::string parse = "KxSipParseError: ";
    const std::pair<std::string, std::string> rows[] = {
        {"Max-Forwards: 70\r\n", "0"},
        {"Max-Forwards: x\r\n", parse + "Invalid Max-Forwards header"},
        {"Max-Forwards: 256\r\n", parse + "Invalid Max-Forwards header"},
        {"Content-Length: 4294967295\r\n", parse + "Invalid Content-Length header"},
        {"Content-Length: 0x\r\n", parse + "Invalid Content-Length header"},
        {"l: 0\r\nContent-Length: 0\r\n", "0"},
        {"l: 0\r\nContent-Length: 1\r\n", "KxException: multiple Content-Length headers detected"},
        {"Route: sip:<\r\n", parse},
        {"v: SIP/2.0/UDP\r\n", parse},
        {"Accept: a/b\r\nContent-Type: c/d\r\n", "0"},
        {"Subject\r\n", "1"},
        {"Subject\r\nTo: <sip:c>\r\n", "KxException: multiple To headers detected"},
    };
    for (const auto& [lines, expected] : rows) {
        EXPECT_THAT(readText(requestWith(lines)), testing::StartsWith(expected)) << lines;
    }
    EXPECT_EQ(readText("OPTIONS sip:b SIP/2.0\r\nSubject\r\n\r\n"), "KxException: missing Via header");
    EXPECT_EQ(readText("OPTIONS sip:b SIP/2.0\r\nCSeq: 2147483648 OPTIONS\r\n\r\n"), parse + "Invalid CSeq header");
    const KxSipReading reading = KxSipReading::sRead(requestWith("Max-Forwards: x\r\n"));
    EXPECT_EQ(joined(static_cast<int>(reading.kind), reading.statusCode, reading.dropped.size()), "3|400|1");
}

TEST(RFCMessageTest, ReasonPhrases) {
    const auto request = KxHandle<KxSipRequest>(readMessage(requestWith(""))->as<KxSipRequest>());
    for (const auto& [code, phrase] : {std::pair{200, "OK"},
                                       {202, "Accepted"},
                                       {404, "Not Found"},
                                       {489, "Bad Event"},
                                       {608, "Rejected"},
                                       {499, "Unknown 400 Class Response"}}) {
        EXPECT_EQ(KxMake<KxSipResponse>(code, request, nullptr, nullptr, 0U)->getReasonPhrase(), phrase);
    }
}

/** Else it could not be read again. A To keeps its URL's headers. */
TEST(RFCMessageTest, ARequestURIThatIsBuiltHasNoHeaders) {
    const KxSipOptionsMessage built("<sip:a@h>", "<sip:b@h;x?Subject=s>", "", "c", 1, nullptr, nullptr, 0U);
    EXPECT_EQ(startLineOf(built), "OPTIONS sip:b@h;x SIP/2.0");
    EXPECT_EQ(written(*built.getToHeader()), "To: <sip:b@h;x?Subject=s>\r\n");
}
