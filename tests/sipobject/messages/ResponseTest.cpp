#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

static KxHandle<KxSipMessage> options(const std::string& headers) {
    return readMessage("OPTIONS sip:b@example.com SIP/2.0\r\n" + headers + "\r\n");
}

TEST(ResponseTest, KnownCodesHaveTheirPhraseAndTheOthersTheirClass) {
    // with the phrase if it differs from RFC 3261, and for the first and last of the table
    const std::string known =
        "|100 Trying|180 |181 |182 |183 |200 Ok|300 |301 |302 |303 |305 |380 Alternative Service|400 |401 |402 |403 "
        "|404 |405 |406 |407 |408 |409 |410 |411 |413 Request Message Body Too Large|414 Request-URI Too Large|415 "
        "|416 |420 |421 |422 Session Timer Too Small|480 Temporarily not available|481 |482 |483 |484 |485 |486 "
        "|487 Transaction Cancelled|488 |491 |493 |500 Internal Server Error|501 |502 |503 |504 "
        "|505 SIP Version not supported|513 |600 |603 |604 |606 Not Acceptable|";
    const KxHandle<KxSipMessage> request = options(requiredHeaders("OPTIONS"));
    for (int code = 100; code < 700; ++code) {
        const std::string start = std::to_string(code) + " ";
        const std::string line = startLineOf(*derive(request, "response " + start)).substr(8);
        const std::size_t at = known.find("|" + start);
        EXPECT_EQ(line == start + "Unknown " + start[0] + "00 Class Response", at == std::string::npos) << line;
        EXPECT_TRUE(at == std::string::npos || known[at + 5] == '|' || known.find(line + "|") == at + 1) << line;
    }
}

TEST(ResponseTest, RefusesWhatMakesNoResponse) {
    const auto request = as<KxSipRequest>(options(requiredHeaders("OPTIONS")));
    const auto bye = as<KxSipRequest>(readMessage("BYE sip:b SIP/2.0\r\n" + requiredHeaders("BYE") + "\r\n"));
    const std::tuple<int, KxHandle<KxSipRequest>, const char*, const char*, const char*> rows[] = {
        {99, {}, nullptr, nullptr, "KxSipParseError: Invalid Response code"},
        {700, request, nullptr, nullptr, "KxSipParseError: Invalid Response code"},
        {-200, request, nullptr, nullptr, "KxSipParseError: Invalid Response code"},
        {100, {}, nullptr, nullptr, "KxSipParseError: Handle to request is NIL"},
        {200, request, nullptr, "a/b", "KxSipParseError: Can't build SIP request with NULL body pointer"},
        {200, request, "x", nullptr, "KxSipParseError: Can't build SIP request(with body) with no content-type"},
        {200, bye, nullptr, nullptr, "SIP/2.0 200 Ok"},
    };
    for (const auto& row : rows) {
        const Balance balance;
        EXPECT_EQ(outcomeOf([&row] {
                      const auto& [code, parent, body, type, outcome] = row;
                      return startLineOf(*KxMake<KxSipResponse>(code, parent, body, type, 1U));
                  }),
                  std::get<4>(row));
    }
}

TEST(ResponseTest, WhatTheRequestLacksIsToldByTheCheck) {
    const std::string lines[] = {"Via: SIP/2.0/UDP 192.0.2.1\r\n", "From: <sip:a>\r\n", "To: <sip:b>, <sip:b2>\r\n",
                                 "CSeq: 1 OPTIONS\r\nCSeq: 2 OPTIONS\r\n", "Call-ID: c\r\nCall-ID: d\r\n"};
    const char* const outcomes[] = {"missing Via header", "missing From header", "missing To header",
                                    "missing CSeq header", "missing Call-ID header"};
    for (std::size_t missing = 0; missing <= std::size(lines); ++missing) {
        const Balance balance;
        std::string headers = "no colon\r\n";
        for (std::size_t i = 0; i < std::size(lines); ++i) {
            headers += i == missing ? "" : lines[i];
        }
        const std::string outcome = derivedText(options(headers), "response 200");
        if (missing < std::size(lines)) {
            EXPECT_EQ(outcome, std::string("KxException: ") + outcomes[missing]);
        } else { // the first of several values is copied
            EXPECT_EQ(outcome, "SIP/2.0 200 Ok\r\nVia: SIP/2.0/UDP 192.0.2.1\r\nFrom: <sip:a>\r\nTo: <sip:b>\r\n"
                               "Call-ID: c\r\nCSeq: 1 OPTIONS\r\nContent-Length: 0\r\n\r\n");
        }
    }
}

TEST(ResponseTest, AnEmptyCSeqMethodBecomesTheRequests) {
    const auto request = as<KxSipRequest>(options("no colon\r\nVia: SIP/2.0/UDP h\r\nFrom: <sip:a>\r\nTo: <sip:b>\r\n"
                                                  "Call-ID: c\r\n"));
    const auto cseq = KxMake<KxSipCSeqHeader>(5U, KxString(""));
    request->addHeader(cseq, false);
    EXPECT_EQ(derive(request, "response 404")->getCSeqHeader()->getMethod(), "OPTIONS");
    EXPECT_EQ(cseq->getMethod(), "");
}

TEST(ResponseTest, DropsAllViasAndRecordRoutes) {
    const auto response = as<KxSipResponse>(
        readMessage("SIP/2.0 200 OK\r\n" + requiredHeaders("OPTIONS") +
                    "VIA: SIP/2.0/UDP h1, SIP/2.0/UDP h2\r\nRecord-Route: <sip:r1>, <sip:r2>\r\nX-A: y\r\n\r\n"));
    response->removeViaHeader();
    response->removeRecordRouteHeader();
    response->removeViaHeader();
    EXPECT_EQ(written(*response), "SIP/2.0 200 OK\r\nFrom: <sip:a@example.com>;tag=1\r\nTo: <sip:b@example.com>\r\n"
                                  "Call-ID: c@192.0.2.1\r\nCSeq: 1 OPTIONS\r\nX-A: y\r\nContent-Length: 0\r\n\r\n");
}
