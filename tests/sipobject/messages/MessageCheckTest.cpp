#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "tests/core/LogCapture.h"
#include "tests/sipobject/support/Derivation.h"

#include <gmock/gmock.h>

#include <set>
#include <thread>

namespace {

/** A request whose check can be called. */
class OpenRequest final : public KxSipRequest {
public:
    explicit OpenRequest(const char* method) : KxSipRequest(KxString(method)) {}
    OpenRequest(const OpenRequest&) = default;
    OpenRequest* clone() const override { return new OpenRequest(*this); }
    using KxSipMessage::checkValidity;
};

KxHandle<KxSipHeader> header(const std::string& line) {
    const HeapText bytes(line + "\r\n");
    KxByteArrayInputStream in(bytes.view());
    return KxSipHeader::sConstructFrom(in);
}

std::string checked(const std::vector<std::string>& lines) {
    const auto request = KxMake<OpenRequest>("INVITE");
    for (const std::string& line : lines) {
        request->addHeader(header(line), false);
    }
    const std::string outcome = outcomeOf([&request] {
        request->checkValidity();
        return std::string("passed");
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
    std::string more;

    KxHandle<KxSipMessage> read() const {
        return readMessage("INVITE sip:b@example.com SIP/2.0\r\nVia: " + via + "\r\nFrom: " + from + "\r\nTo: " + to +
                           "\r\nCall-ID: " + callId + "\r\nCSeq: " + cseq + "\r\n" + more + "\r\n");
    }
    std::string key() const {
        return outcomeOf([this] { return std::string(read()->createKey().view()); });
    }
};

template <class Change>
InviteText with(Change change) {
    InviteText text;
    change(text);
    return text;
}

} // namespace

TEST(CheckValidityTest, TellsTheFirstFaultOfAll) {
    // Each row mends what the one before was told of.
    struct Row {
        std::vector<std::string> mended; ///< Added to the headers; "-Name" takes the first of that name out.
        const char* fault;
    };
    const Row rows[] = {
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
    for (const Row& row : rows) {
        for (const std::string& line : row.mended) {
            const auto same = [&line](const std::string& other) { return other.starts_with(line.substr(1)); };
            if (line[0] == '-') {
                lines.erase(std::find_if(lines.begin(), lines.end(), same));
            } else {
                lines.push_back(line);
            }
        }
        EXPECT_EQ(checked(lines), row.fault == nullptr ? "passed" : std::string("KxException: ") + row.fault);
    }
}

TEST(CheckValidityTest, JudgesWhatWasParsed) {
    struct Row {
        const char* name;
        std::string text;
        const char* outcome;
    };
    const std::string request = "INVITE sip:b SIP/2.0\r\n";
    const std::string response = "SIP/2.0 200 OK\r\n";
    const Row rows[] = {
        {"method in other letters", request + requiredHeaders("invite"), "status 0"},
        {"another method", request + requiredHeaders("INVIT"),
         "KxException: invalid method in CSeq header (got=\"INVIT\" expected=\"INVITE\""},
        {"a response's method is its own", response + requiredHeaders("anything"), "status 0"},
        {"response without To", response + "Via: SIP/2.0/UDP h\r\nFrom: <sip:a>\r\n", "KxException: missing To header"},
        {"body without a type", request + requiredHeaders("INVITE") + "\r\nbody",
         "KxException: SIP Message has body but no Content-Type header"},
        {"not checked where a line was dropped", request + "no colon\r\n", "status 1"},
        {"not checked where Accept has ruled", request + "Accept: a/b\r\nContent-Type: c/d\r\n", "status 2"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Balance balance;
        EXPECT_EQ(outcomeOf([&row] { return "status " + std::to_string(readMessage(row.text + "\r\n")->getStatus()); }),
                  row.outcome);
    }
}

TEST(CheckValidityTest, SaysAtDebugLevelThatAllPassed) {
    LogCapture log(log4cplus::Logger::getInstance("tandril.kx.KxSipMessage"));
    log4cplus::Logger::getInstance("tandril.kx.KxSipMessage").setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    InviteText().read();
    EXPECT_THAT(log.texts(), testing::Contains("KxSipMessage::checkValidity : m_Status=0"));
}

// ---- the transaction key ----

TEST(TransactionKeyTest, IsThePartsBehindEachOther) {
    const std::string tail = "192.0.2.10z9hG4bK1c@192.0.2.11";
    const std::string usual = "bexample.com5060aexample.com50601";
    const std::string many(5000, 'm');
    const std::pair<InviteText, std::string> rows[] = {
        {InviteText(), usual + tail},
        {with([](InviteText& t) { t.to = "Bob <sip:b:pw@h:5070;x=1?a=b>;tag=ignored"; }),
         "bh5070aexample.com50601" + tail},
        {with([](InviteText& t) { t.to = "<sip:h>", t.from = "<sip:h>"; }), "h5060h5060" + tail},
        {with([](InviteText& t) { t.to = "<tel:+1;x=2>", t.from = "<tel:3>;tag=t"; }), "tel:+1;x=2tel:3t" + tail},
        {with([](InviteText& t) { t.to = "<http://h/p>"; }), "http://h/paexample.com50601" + tail},
        {with([](InviteText& t) { t.via = "SIP/2.0/UDP h:5099;rport, SIP/2.0/UDP h2;branch=2"; }),
         usual + "h5099c@192.0.2.11"},
        {with([](InviteText& t) { t.via = "SIP/2.0/TLS h:0;branch=b", t.cseq = "4294967295 INVITE", t.callId = "i"; }),
         usual + "h0bi4294967295"},
        {with([&many](InviteText& t) { t.to = "<sip:" + many + "@h>", t.callId = many, t.via += many; }),
         many + "h5060aexample.com50601192.0.2.10z9hG4bK1" + many + many + "1"},
        {with([](InviteText& t) { t.more = "no colon\r\n"; }), usual + tail},
        {with([](InviteText& t) { t.more = "Accept: a/b\r\nContent-Type: c/d\r\n"; }),
         "KxException: Unable to create transaction key for INVALID SIP Message"},
    };
    for (const auto& [text, key] : rows) {
        EXPECT_EQ(text.key(), key);
    }
}

TEST(TransactionKeyTest, AbsentHeadersGiveNothing) {
    const auto request = KxMake<KxSipUnknownRequest>("INVITE");
    EXPECT_EQ(request->createKey(), "");
    const auto url = [](const char* text) { return KxHandle<KxSipURL>(new KxSipURL(text)); };
    request->addHeader(KxMake<KxSipToHeader>(url("sip:u@h;transport=tls"), nullptr), false);
    EXPECT_EQ(request->createKey(), "uh5061");
    request->addHeader(KxMake<KxSipFromHeader>(url("sip:h:1;transport=TLS"), nullptr), false);
    EXPECT_EQ(request->createKey(), "uh5061h1");
    request->addHeader(KxMake<KxSipCSeqHeader>(7U, KxString("ACK")), false);
    EXPECT_EQ(request->createKey(), "uh5061h17");
}

TEST(TransactionKeyTest, ResponsesShareItAndOtherTransactionsDoNot) {
    const KxHandle<KxSipMessage> invite = InviteText().read();
    const KxString key = invite->createKey();
    for (const char* how : {"response 100", "response 180", "response 200 body", "response 486"}) {
        const KxHandle<KxSipMessage> response = derive(invite, how);
        response->getToHeader()->setTag("anything");
        EXPECT_EQ(response->createKey(), key) << how;
        EXPECT_EQ(readMessage(written(*response))->createKey(), key) << how;
    }
    EXPECT_EQ(derive(invite, "cancel")->createKey(), key);

    const InviteText others[] = {
        with([](InviteText& t) { t.via += "x"; }),
        with([](InviteText& t) { t.from += "x"; }),
        with([](InviteText& t) { t.from = "<sip:a@example.com>"; }),
        with([](InviteText& t) { t.cseq = "2 INVITE"; }),
        with([](InviteText& t) { t.callId += "x"; }),
        with([](InviteText& t) { t.to = "<sip:B@example.com>"; }),
        with([](InviteText& t) { t.via = "SIP/2.0/UDP 192.0.2.2;branch=z9hG4bK1"; }),
    };
    std::set<std::string> keys = {std::string(key.view())};
    for (const InviteText& other : others) {
        EXPECT_TRUE(keys.insert(other.key()).second) << other.key();
    }
}

// ---- a message that several threads share ----

TEST(SharedMessageThreadTest, LosesNoHeader) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 150;
    const KxHandle<KxSipMessage> message = InviteText().read();
    const std::string start = written(*message);
    {
        std::vector<std::jthread> threads;
        for (int id = 0; id < kThreads; ++id) {
            threads.emplace_back([&message, id] {
                const std::string mine = "X-" + std::to_string(id) + "-";
                for (int round = 0; round < kRounds; ++round) {
                    const std::string kept = mine + std::to_string(round);
                    const std::string passing = mine + "passing";
                    message->addHeader(header(kept + ": v"), round % 2 == 0);
                    message->addSingleHeader(header(passing + ": v"), round % 3 == 0);
                    message->addHeader(header("Subject: s"), false);
                    EXPECT_EQ(message->getHeader(kept)->getToken(), kept);
                    EXPECT_TRUE(message->getHeader("X-none").isNil());
                    EXPECT_TRUE(message->removeHeader(passing));
                    EXPECT_TRUE(message->removeHeader("subject"));
                    if (round % 10 == id) {
                        EXPECT_NE(written(*message).find("\r\n" + kept + ": v\r\n"), std::string::npos);
                        const KxHandle<KxSipMessage> copy(static_cast<KxSipMessage*>(message->clone()));
                        EXPECT_FALSE(copy->getHeader(kept).isNil());
                        EXPECT_EQ(message->createKey(), copy->createKey());
                    }
                }
            });
        }
    }
    for (int id = 0; id < kThreads; ++id) {
        for (int round = 0; round < kRounds; ++round) {
            EXPECT_TRUE(message->removeHeader("X-" + std::to_string(id) + "-" + std::to_string(round)));
        }
    }
    EXPECT_EQ(written(*message), start);
}
