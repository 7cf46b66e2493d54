#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

std::string checked(const std::vector<std::string>& lines) {
    const auto request = KxMake<OpenRequest>("INVITE");
    for (const std::string& line : lines) {
        request->addHeader(readHeader(line), false);
    }
    const std::string outcome = outcomeOf([&request] {
        request->checkValidity();
        return "passed";
    });
    EXPECT_EQ(request->getStatus(), outcome == "passed" ? KX_STATUS_VALID : KX_STATUS_UNUSABLE) << outcome;
    return outcome;
}

/** An INVITE's text from its parts. */
struct InviteText {
    std::string to = "<sip:b@example.com>";
    std::string from = "<sip:a@example.com>;tag=1";
    std::string via = "SIP/2.0/UDP 192.0.2.1;branch=z9hG4bK1";
    std::string callId = "c@192.0.2.1";
    std::string cseq = "1 INVITE";
    std::string more = {};

    KxHandle<KxSipMessage> read() const {
        return readMessage("INVITE sip:b@example.com SIP/2.0\r\nVia: " + via + "\r\nFrom: " + from + "\r\nTo: " + to +
                           "\r\nCall-ID: " + callId + "\r\nCSeq: " + cseq + "\r\n" + more + "\r\n");
    }
};

} // namespace

TEST(CheckValidityTest, TellsTheFirstFaultOfAll) {
    // Each row corrects the fault of the row before: it adds lines; "-Name" removes the first line of that name.
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{}, "missing Via header"},
        {{"v: SIP/2.0/UDP h, SIP/2.0/UDP h2"}, "missing From header"},
        {{"From: <sip:a>", "f: <sip:a>"}, "multiple From headers detected"},
        {{"-f"}, "missing To header"},
        {{"To: <sip:b>, <sip:b>"}, "multiple To headers detected"},
        {{"-To", "t: <sip:b>"}, "missing CSeq header"},
        {{"CSeq: 1 BYE", "CSeq: 2 INVITE"}, "invalid method in CSeq header (got=\"BYE\" expected=\"INVITE\""},
        {{"-CSeq", "-CSeq", "CSeq: 1 inVite", "CSeq: 1 BYE"}, "multiple CSeq headers detected"},
        {{"-CSeq: 1 BYE"}, "missing Content-Length header"},
        {{"Content-Length: 0", "l: 5"}, "multiple Content-Length headers detected"},
        {{"-Content-Length"}, "SIP Message has body but no Content-Type header"},
        {{"c: a/b"}, "missing Call-ID header"},
        {{"i: 1", "Call-ID: 1"}, "multiple Call-ID headers detected"},
        {{"-i"}, nullptr},
    };
    std::vector<std::string> lines;
    for (const auto& [corrections, fault] : rows) {
        for (const std::string& line : corrections) {
            if (line[0] == '-') {
                lines.erase(std::ranges::find_if(lines, [&](const auto& l) { return l.starts_with(line.substr(1)); }));
            } else {
                lines.push_back(line);
            }
        }
        EXPECT_EQ(checked(lines), fault == nullptr ? "passed" : std::string("KxException: ") + fault);
    }
}

TEST(CheckValidityTest, MethodsOfResponsesAndMessagesWithDroppedLinesAreNotCheckedAndSuccessIsLogged) {
    EXPECT_EQ(readMessage("SIP/2.0 200 OK\r\n" + requiredHeaders("anything") + "\r\n")->getStatus(), 0);
    EXPECT_EQ(readMessage("INVITE sip:b SIP/2.0\r\nno colon\r\nAccept: a/b\r\nContent-Type: c/d\r\n\r\n")->getStatus(),
              1);
    ClassLog log("tandril.kx.KxSipMessage");
    InviteText().read();
    EXPECT_THAT(log.texts(), testing::Contains("KxSipMessage::checkValidity : m_Status=0"));
}

TEST(TransactionKeyTest, IsThePartsBehindEachOther) {
    const std::string tail = "192.0.2.10z9hG4bK1c@192.0.2.11";
    const std::string usual = "bexample.com5060aexample.com50601";
    const std::string many(5000, 'm');
    const std::pair<InviteText, std::string> rows[] = {
        {{.to = "Bob <sip:b:pw@h:5070;x=1?a=b>;tag=ignored"}, "bh5070aexample.com50601" + tail},
        {{.to = "<sip:h>", .from = "<sip:h>"}, "h5060h5060" + tail},
        {{.to = "<tel:+1;x=2>", .from = "<tel:3>;tag=t"}, "tel:+1;x=2tel:3t" + tail},
        {{.via = "SIP/2.0/UDP h:5099;rport, SIP/2.0/UDP h2;branch=2"}, usual + "h5099c@192.0.2.11"},
        {{.via = "SIP/2.0/TLS h:0;branch=b", .callId = "i", .cseq = "4294967295 INVITE"}, usual + "h0bi4294967295"},
        {{.to = "<sip:" + many + "@h>", .via = "SIP/2.0/UDP h;branch=" + many, .callId = many},
         many + "h5060aexample.com50601h0" + many + many + "1"},
        {{.more = "no colon\r\n"}, usual + tail},
        {{.more = "Accept: a/b\r\nContent-Type: c/d\r\n"},
         "KxException: Unable to create transaction key for INVALID SIP Message"},
    };
    for (const auto& [text, key] : rows) {
        EXPECT_EQ(outcomeOf([&t = text] { return std::string(t.read()->createKey().view()); }), key);
    }
}

TEST(TransactionKeyTest, AbsentHeadersGiveNothing) {
    const auto request = KxMake<OpenRequest>("INVITE");
    EXPECT_EQ(request->createKey(), "");
    const auto url = [](const char* text) { return KxHandle<KxSipURL>(new KxSipURL(text)); };
    request->addHeader(KxMake<KxSipToHeader>(url("sip:u@h;transport=tls"), nullptr), false);
    EXPECT_EQ(request->createKey(), "uh5061");
    request->addHeader(KxMake<KxSipFromHeader>(url("sip:h:1;transport=TLS"), nullptr), false);
    EXPECT_EQ(request->createKey(), "uh5061h1");
    request->addHeader(KxMake<KxSipCSeqHeader>(7U, KxString("ACK")), false);
    EXPECT_EQ(request->createKey(), "uh5061h17");
}
