#include "sipobject/messages/KxSipRequest.h"

#include "core/GlobalConfig.h"
#include "core/ParameterInfoDB.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "tests/core/LogCapture.h"
#include "tests/sipobject/support/MessageSupport.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* kIgnoreMaxForwards = "tandril.sip.ignoreMaxForwards";

/** The arguments of the constructor from texts; null where a text is not given. */
struct Texts {
    const char* method = "FROB";
    const char* from = "<sip:a@h>;tag=1";
    const char* to = "<sip:b@h>";
    const char* contact = nullptr;
    const char* callId = "x";
    unsigned cseq = 9;
    const char* type = nullptr;
    const void* body = nullptr;
    unsigned length = 0;
};

KxHandle<KxSipUnknownRequest> build(const Texts& t) {
    return KxMake<KxSipUnknownRequest>(t.method, t.from, t.to, t.contact, t.callId, t.cseq, t.type, t.body, t.length);
}

KxHandle<KxSipRequest> readRequest(const std::string& headers, const std::string& uri = "sip:b@example.com") {
    const KxHandle<KxSipMessage> message =
        readMessage("OPTIONS " + uri + " SIP/2.0\r\n" + headers + "Content-Length: 0\r\n\r\n");
    return KxHandle<KxSipRequest>(dynamic_cast<KxSipRequest*>(message.get()));
}

/** A request that can be told to parse, so that it outlives a failure. */
class OpenRequest final : public KxSipRequest {
public:
    OpenRequest() = default;
    OpenRequest(const OpenRequest&) = default;
    OpenRequest* clone() const override { return new OpenRequest(*this); }
    using KxSipMessage::setStatus;
    using KxSipRequest::parse;
};

/** Sets the configuration parameter while in scope. */
class Ignoring {
public:
    explicit Ignoring(const char* value) {
        if (value != nullptr) {
            Oskan::GlobalConfig::getInstance().set(kIgnoreMaxForwards, value);
        }
    }
    ~Ignoring() { Oskan::GlobalConfig::getInstance().unset(kIgnoreMaxForwards); }
    Ignoring(const Ignoring&) = delete;
    Ignoring& operator=(const Ignoring&) = delete;
};

} // namespace

TEST(RequestBuildTest, HeadersStandInTheOrderOfTheArguments) {
    struct Row {
        const char* name;
        Texts texts;
        const char* outcome;
    };
    Texts all;
    all.contact = "A <sip:a@c>;q=1";
    all.type = "text/plain";
    all.body = "hello";
    all.length = 4;
    Texts emptyContact;
    emptyContact.contact = "";
    emptyContact.type = "text/plain";
    emptyContact.body = "unused";
    Texts toWithHeaders;
    toWithHeaders.to = "Bob <sip:b@h?Subject=hi>;tag=2";
    Texts bareTo;
    bareTo.to = "sip:b@h;x=1";
    Texts telTo;
    telTo.to = "tel:+1";
    const Row rows[] = {
        {"everything", all,
         "FROB sip:b@h SIP/2.0\r\nFrom: <sip:a@h>;tag=1\r\nTo: <sip:b@h>\r\nContact: A <sip:a@c>;q=1\r\nCall-ID: x\r\n"
         "CSeq: 9 FROB\r\nContent-Length: 4\r\nContent-Type: text/plain\r\n\r\nhell"},
        {"no contact, no body", emptyContact,
         "FROB sip:b@h SIP/2.0\r\nFrom: <sip:a@h>;tag=1\r\nTo: <sip:b@h>\r\nCall-ID: x\r\nCSeq: 9 FROB\r\n"
         "Content-Length: 0\r\n\r\n"},
        {"URL headers of To stay in both", toWithHeaders,
         "FROB sip:b@h?Subject%3Dhi SIP/2.0\r\nFrom: <sip:a@h>;tag=1\r\nTo: Bob <sip:b@h?Subject%3Dhi>;tag=2\r\n"
         "Call-ID: x\r\nCSeq: 9 FROB\r\nContent-Length: 0\r\n\r\n"},
        {"parameters behind a bare URL are To's", bareTo,
         "FROB sip:b@h SIP/2.0\r\nFrom: <sip:a@h>;tag=1\r\nTo: <sip:b@h>;x=1\r\nCall-ID: x\r\nCSeq: 9 FROB\r\n"
         "Content-Length: 0\r\n\r\n"},
        {"tel To", telTo,
         "FROB tel:+1 SIP/2.0\r\nFrom: <sip:a@h>;tag=1\r\nTo: <tel:+1>\r\nCall-ID: x\r\nCSeq: 9 FROB\r\n"
         "Content-Length: 0\r\n\r\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const KxHandle<KxSipUnknownRequest> request = build(row.texts);
        EXPECT_EQ(written(*request), row.outcome);
        EXPECT_EQ(request->getStatus(), KX_STATUS_VALID);
        EXPECT_TRUE(request->isValid());
    }
}

TEST(RequestBuildTest, HeadersOfAGivenURIBecomeTheRequests) {
    const auto target = KxMake<KxSipNameAddress>("T <sip:t@h;lr?Subject=hi;X-A=1>");
    const auto from = KxMake<KxSipFromHeader>("<sip:a@h>");
    const auto to = KxMake<KxSipToHeader>("<sip:b@h>");
    const auto contact = KxMake<KxSipContactHeader>("<sip:c@h>");
    const auto request = KxMake<KxSipUnknownRequest>("FROB", target, from, to, contact, "x", 9U, nullptr, nullptr, 0U);
    EXPECT_EQ(written(*request),
              "FROB sip:t@h;lr SIP/2.0\r\nFrom: <sip:a@h>\r\nTo: <sip:b@h>\r\nSubject: hi\r\nX-A: 1\r\n"
              "Contact: <sip:c@h>\r\nCall-ID: x\r\nCSeq: 9 FROB\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(request->getFromHeader(), from);
    EXPECT_EQ(request->getURL()->getHost(), "h");
}

TEST(RequestBuildTest, MakesCallIdAndCSeqWhereNoneIsGiven) {
    std::string callIds[2];
    for (const char* none : {static_cast<const char*>(nullptr), ""}) {
        Texts texts;
        texts.callId = none;
        texts.cseq = 0;
        const KxHandle<KxSipUnknownRequest> request = build(texts);
        std::string& callId = callIds[none == nullptr ? 0 : 1];
        callId = request->getCallIdHeader()->getCallId().view();
        EXPECT_THAT(callId.substr(0, 37), testing::MatchesRegex("[0-9a-fA-F-]*@"));
        EXPECT_EQ(callId.substr(37), KxInetAddress::sGetLocalHostName().view());
        EXPECT_LT(request->getCSeqHeader()->getSeqNumber(), 16777215U);
        EXPECT_EQ(request->getCSeqHeader()->getMethod(), "FROB");
    }
    EXPECT_NE(callIds[0], callIds[1]);
}

TEST(RequestBuildTest, WhatCannotBeBuiltIsRefusedWhole) {
    const auto with = [](auto change) {
        Texts texts;
        change(texts);
        return texts;
    };
    const std::pair<Texts, const char*> rows[] = {
        {with([](Texts& t) { t.method = nullptr; }), "KxException: The SIP Method cannot be NULL or EMPTY"},
        {with([](Texts& t) { t.method = ""; }), "KxException: The SIP Method cannot be NULL or EMPTY"},
        {with([](Texts& t) { t.from = "<sips:a>"; }), "KxSipParseError: Scheme is not SIP"},
        {with([](Texts& t) { t.to = "<sip:@>"; }),
         "KxSipParseError: Sip URL wrong format (\"@\" present without a user part)"},
        {with([](Texts& t) { t.contact = "a@b <sip:c>"; }), "KxSipParseError: Invalid Character (@) in name-addr"},
        {with([](Texts& t) { t.length = 3; }), "KxSipParseError: Can't build SIP request with NULL body pointer"},
        {with([](Texts& t) { t.length = 3, t.body = "abc"; }),
         "KxSipParseError: Can't build SIP request(with body) with no content-type"},
    };
    for (const auto& [texts, outcome] : rows) {
        const Balance balance;
        EXPECT_EQ(outcomeOf([&t = texts] { return written(*build(t)); }), outcome);
    }
    EXPECT_EQ(outcomeOf([] { return written(*KxMake<KxSipUnknownRequest>("")); }),
              "KxException: KxSipRequest constructor expects a Method Name");
}

TEST(RequestBuildTest, NilPartiesAreLeftOutUnlessTheRequestURIComesFromThem) {
    const auto from = KxMake<KxSipFromHeader>("<sip:a@h>");
    const auto to = KxMake<KxSipToHeader>("<sip:b@h>");
    const auto outcome = [](const KxHandle<KxSipFromHeader>& f, const KxHandle<KxSipToHeader>& t) {
        return outcomeOf([&] {
            return written(*KxMake<KxSipUnknownRequest>("FROB", f, t, KxHandle<KxSipContactHeader>(), "x", 9U, nullptr,
                                                        nullptr, 0U));
        });
    };
    EXPECT_EQ(outcome(nullptr, to), "FROB sip:b@h SIP/2.0\r\nTo: <sip:b@h>\r\nCall-ID: x\r\nCSeq: 9 FROB\r\n"
                                    "Content-Length: 0\r\n\r\n");
    EXPECT_THAT(outcome(from, nullptr), testing::StartsWith("KxSipParseError: "));
}

TEST(RequestURITest, TellsHostAndPort) {
    struct Row {
        const char* uri;
        const char* host;
        unsigned port;
        bool isURL;
    };
    const Row rows[] = {
        {"sip:u@h", "h", 5060, true},
        {"sip:h:5070;transport=tls", "h", 5070, true},
        {"sip:h;transport=TLS", "h", 5061, true},
        {"sip:h;transport=tcp", "h", 5060, true},
        {"<sip:h:0>", "h", 0, true},
        {"tel:+1", "", 0, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.uri);
        const auto request = readRequest(requiredHeaders("OPTIONS"), row.uri);
        EXPECT_STREQ(request->getRequestURIHost(), row.host);
        EXPECT_EQ(request->getRequestURIPort(), row.port);
        if (row.isURL) {
            EXPECT_EQ(request->getURL(), request->getURI());
        }
        EXPECT_EQ(request->getNameAddress()->getURLString(), request->getURI()->getString());
        request->setURI(nullptr);
        EXPECT_TRUE(request->getURL().isNil());
        EXPECT_STREQ(request->getRequestURIHost(), "");
        EXPECT_EQ(request->getRequestURIPort(), 0U);
    }
}

TEST(RequestTest, InsertedViaStandsFirst) {
    const auto request = readRequest(requiredHeaders("OPTIONS"));
    request->insertViaHeader("h1", 5099, "tcp");
    request->insertViaHeader("h2", 5060, "UDP");
    EXPECT_THAT(written(*request), testing::StartsWith("OPTIONS sip:b@example.com SIP/2.0\r\n"
                                                       "Via: SIP/2.0/UDP h2:5060\r\nVia: SIP/2.0/TCP h1:5099\r\n"
                                                       "Via: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bK1\r\nFrom:"));
    EXPECT_THROW(request->insertViaHeader("h", 5060, "pigeon"), KxHandle<KxException>);
    Texts texts;
    const auto built = build(texts);
    built->insertViaHeader("h1", 5099, "tcp");
    EXPECT_THAT(written(*built), testing::EndsWith("Content-Length: 0\r\nVia: SIP/2.0/TCP h1:5099\r\n\r\n"));
}

TEST(RequestTest, IsValidComparesTheMethodExactly) {
    EXPECT_TRUE(readRequest(requiredHeaders("OPTIONS"))->isValid());
    const auto other = readRequest(requiredHeaders("Options"));
    EXPECT_EQ(other->getStatus(), KX_STATUS_VALID);
    EXPECT_FALSE(other->isValid());
    EXPECT_FALSE(readRequest(requiredHeaders("OPTIONS") + "no colon\r\n")->isValid());
    EXPECT_FALSE(KxMake<KxSipUnknownRequest>("OPTIONS")->isValid());
}

TEST(RequestTest, CopiesKeepThePreferredAddress) {
    const auto request = readRequest(requiredHeaders("OPTIONS"));
    EXPECT_STREQ(request->getPreferredIpAddrStr(), "");
    request->setPreferredIpAddr("192.0.2.9");
    const KxHandle<KxObject> copy(request->clone());
    request->setPreferredIpAddr("192.0.2.10");
    EXPECT_STREQ(request->getPreferredIpAddrStr(), "192.0.2.10");
    EXPECT_STREQ(static_cast<const KxSipRequest&>(*copy).getPreferredIpAddrStr(), "192.0.2.9");
}

// ---- what the stack refuses ----

TEST(RejectedByStackTest, TellsTheFirstReasonOfSeveral) {
    const std::string none = "Max-Forwards: 0\r\n";
    const std::string some = "Max-Forwards: 1\r\n";
    const std::string longest = "sip:" + std::string(1023 - 4, 'h');
    struct Row {
        const char* name;
        std::string uri;
        std::string headers;
        const char* ignore;
        unsigned code;
    };
    const Row rows[] = {
        {"ordinary", "sip:b", some, nullptr, 0},
        {"no hops left", "sip:b", none, nullptr, 483},
        {"no hops left, told not to ignore it", "sip:b", none, "false", 483},
        {"no hops left, ignored", "sip:b", none, "true", 0},
        {"no hops left, setting can't be read", "sip:b", none, "perhaps", 483},
        {"not a number", "sip:b", "Max-Forwards: x\r\n", nullptr, 483},
        {"no Max-Forwards", "sip:b", "", nullptr, 0},
        {"longest URI", longest, some, nullptr, 0},
        {"URI too long", longest + "h", some, nullptr, 414},
        {"hops before length", longest + "h", none, nullptr, 483},
        {"length where hops are ignored", longest + "h", none, "true", 414},
        {"status before hops", longest + "h", none + "no colon\r\n", nullptr, 1},
        {"status 2 before hops", "sip:b", none + "Accept: a/b\r\nContent-Type: c/d\r\n", nullptr, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto request = readRequest(requiredHeaders("OPTIONS") + row.headers, row.uri);
        const Ignoring ignoring(row.ignore);
        unsigned code = 77;
        EXPECT_EQ(request->rejectedByStack(code), row.code != 0);
        EXPECT_EQ(code, row.code);
    }
}

TEST(RejectedByStackTest, TellsTheCodeOfTheStartLine) {
    const std::pair<const char*, unsigned> rows[] = {
        {" sip:b SIP/3.0\r\n", 505},    {" sip:b SIP/2.1\r\n", 505}, {" sips:b SIP/2.0\r\n", 416},
        {" mailto:b SIP/2.0\r\n", 416}, {" sip:b SIP/2.0\n", 2},     {" sip:b SIP/2.00\r\n", 2},
    };
    for (const auto& [line, expected] : rows) {
        SCOPED_TRACE(line);
        const auto request = KxMake<OpenRequest>();
        KxByteArrayInputStream in{std::string_view(line)};
        EXPECT_THROW(request->parse("OPTIONS", in), KxHandle<KxSipParseError>);
        unsigned code = 0;
        EXPECT_TRUE(request->rejectedByStack(code));
        EXPECT_EQ(code, expected);
    }
}

TEST(TooManyHopsTest, TheSettingHoldsFromTheNextCallOn) {
    const auto request = readRequest(requiredHeaders("OPTIONS") + "Max-Forwards: 0\r\n");
    LogCapture log(log4cplus::Logger::getInstance("tandril.kx.KxSipRequest"));
    log4cplus::Logger::getInstance("tandril.kx.KxSipRequest").setLogLevel(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(request->tooManyHops());
    {
        const Ignoring ignoring("true");
        EXPECT_FALSE(request->tooManyHops());
    }
    EXPECT_TRUE(request->tooManyHops());
    ASSERT_EQ(log.records.size(), 3U);
    for (const LogRecord& record : log.records) {
        EXPECT_EQ(record.logger, "tandril.kx.KxSipRequest");
        EXPECT_EQ(record.level, log4cplus::INFO_LOG_LEVEL);
    }
    EXPECT_THAT(log.texts(), ElementsAre("Got request with Max-Forwards set to 0",
                                         "Got request with Max-Forwards set to 0: ignoring it since "
                                         "tandril.sip.ignoreMaxForwards parameter is set",
                                         "Got request with Max-Forwards set to 0"));
}

TEST(TooManyHopsTest, MissingMaxForwardsIsNotedForThoseWhoAsk) {
    const std::string name = "tandril.sip.UAInterop.MaxForwards";
    log4cplus::Logger logger = log4cplus::Logger::getInstance(name);
    const auto request = readRequest("Via: SIP/2.0/UDP h\r\nFrom: <sip:a>\r\nTo: <sip:b>\r\nCall-ID: c\r\n"
                                     "CSeq: 1 OPTIONS\r\n");
    LogCapture log(logger);
    logger.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
    EXPECT_FALSE(request->tooManyHops());
    EXPECT_THAT(log.texts(), IsEmpty());

    logger.setLogLevel(log4cplus::INFO_LOG_LEVEL);
    EXPECT_FALSE(request->tooManyHops());
    EXPECT_FALSE(readRequest(requiredHeaders("OPTIONS") + "Max-Forwards: 5\r\n")->tooManyHops());
    ASSERT_EQ(log.records.size(), 1U);
    EXPECT_EQ(log.records[0].logger, name);
    EXPECT_EQ(log.records[0].level, log4cplus::INFO_LOG_LEVEL);
    EXPECT_EQ(log.records[0].text,
              "Received a SIP request with no Max-Forwards header. Set " + name +
                  " logger to ERROR level to mute this warning. Request:\nOPTIONS sip:b@example.com SIP/2.0\n"
                  "Via: SIP/2.0/UDP h\nFrom: <sip:a>\nTo: <sip:b>\nCall-ID: c\nCSeq: 1 OPTIONS\nContent-Length: 0\n\n");
}

TEST(TooManyHopsTest, ItsParameterIsRegisteredAtLoad) {
    const Oskan::ParameterInfo* const info = Oskan::ParameterInfoDB::getInstance().find(kIgnoreMaxForwards);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->type, Oskan::ParameterInfo::Type::Boolean);
    EXPECT_EQ(info->defaultValue, "false");
    EXPECT_FALSE(info->range.has_value());
    EXPECT_EQ(
        info->description,
        "Define how SIP max-forward headers are supported in the gateway. The Max-Forwards header field serves to "
        "limit the number of hops a request can transit on the way to its destination. ignoreMaxForwards can "
        "disable this funtionnality. When false (default behavior), the message is rejected if the header value 0 "
        "is reached. When true, the header value is ignored and the message pass thru even with 0. Set the "
        "parameter to true if your application needs to interact with non-compliant UACs. See RFC3261 paragraph "
        "8.1.1.6");
}
