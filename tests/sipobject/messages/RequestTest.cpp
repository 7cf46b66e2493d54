#include "sipobject/messages/KxSipInviteMessage.h"

#include "core/GlobalConfig.h"
#include "core/ParameterInfoDB.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "tests/sipobject/support/HeaderSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* kIgnoreMaxForwards = "tandril.sip.ignoreMaxForwards";

/** The arguments of the constructor from texts; null where a text is not given. */
struct Texts {
    const char* method = "FROB";
    const char* from = "<sip:a@h>;tag=1";
    const char* to = "<sip:b@h>";
    const char* contact = "";
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
    return KxHandleCast<KxSipRequest>(
        readMessage("OPTIONS " + uri + " SIP/2.0\r\n" + headers + "Content-Length: 0\r\n\r\n"));
}

/** Sets the configuration parameter while in scope. */
class Ignoring {
public:
    explicit Ignoring(const char* value) {
        if (value != nullptr) {
            Oskan::GlobalConfig::getInstance().set(kIgnoreMaxForwards, value);
        }
    }
    ~Ignoring() { Oskan::GlobalConfig::getInstance().unset(kIgnoreMaxForwards); }
};

} // namespace

TEST(RequestBuildTest, ItsURIIsThatOfTo) {
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"Bob <sip:b@h?Subject=hi>;tag=2", "sip:b@h?Subject%3Dhi", "Bob <sip:b@h?Subject%3Dhi>;tag=2"},
        {"sip:b@h;x=1", "sip:b@h", "<sip:b@h>;x=1"}, // parameters after a bare URL are those of To
        {"tel:+1", "tel:+1", "<tel:+1>"},
    };
    for (const auto& [given, uri, to] : rows) {
        const auto request = build({.to = given, .type = "text/plain", .body = "unused"});
        EXPECT_EQ(written(*request), "FROB " + uri + " SIP/2.0\r\nFrom: <sip:a@h>;tag=1\r\nTo: " + to +
                                         "\r\nCall-ID: x\r\nCSeq: 9 FROB\r\nContent-Length: 0\r\n\r\n");
        EXPECT_TRUE(request->isValid());
    }
}

TEST(RequestBuildTest, MakesCallIdAndCSeqWhereNoneIsGiven) {
    std::set<std::string> callIds;
    for (const char* none : {static_cast<const char*>(nullptr), ""}) {
        const KxHandle<KxSipUnknownRequest> request = build({.callId = none, .cseq = 0});
        const std::string callId(request->getCallIdHeader()->getCallId().view());
        EXPECT_THAT(callId.substr(0, 37), testing::MatchesRegex("[0-9a-fA-F-]*@"));
        EXPECT_EQ(callId.substr(37), KxInetAddress::sGetLocalHostName().view());
        EXPECT_TRUE(callIds.insert(callId).second);
        EXPECT_LT(request->getCSeqHeader()->getSeqNumber(), 16777215U);
        EXPECT_EQ(request->getCSeqHeader()->getMethod(), "FROB");
    }
}

TEST(RequestBuildTest, WhatCannotBeBuiltIsRefusedWhole) {
    const std::pair<Texts, const char*> rows[] = {
        {{.method = nullptr}, "KxException: The SIP Method cannot be NULL or EMPTY"},
        {{.method = ""}, "KxException: The SIP Method cannot be NULL or EMPTY"},
        {{.from = "<sips:a>"}, "KxSipParseError: Scheme is not SIP"},
        {{.to = "<sip:@>"}, "KxSipParseError: Sip URL wrong format (\"@\" present without a user part)"},
        {{.contact = "a@b <sip:c>"}, "KxSipParseError: Invalid Character (@) in name-addr"},
        {{.length = 3}, "KxSipParseError: Can't build SIP request with NULL body pointer"},
        {{.body = "abc", .length = 3}, "KxSipParseError: Can't build SIP request(with body) with no content-type"},
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
        const KxHandle<KxSipContactHeader> none;
        return outcomeOf(
            [&] { return written(*KxMake<KxSipUnknownRequest>("FROB", f, t, none, "x", 9U, "", "", 0U)); });
    };
    EXPECT_EQ(outcome(nullptr, to),
              "FROB sip:b@h SIP/2.0\r\nTo: <sip:b@h>\r\nCall-ID: x\r\nCSeq: 9 FROB\r\nContent-Length: 0\r\n\r\n");
    EXPECT_THAT(outcome(from, nullptr), testing::StartsWith("KxSipParseError: "));
}

TEST(RequestURITest, TellsHostAndPort) {
    const std::pair<const char*, const char*> rows[] = {
        {"sip:h:5070;transport=tls", "h|5070"},
        {"sip:u@h;transport=TLS", "h|5061"},
        {"<sip:h:0>", "h|0"},
        {"tel:+1", "|0"},
    };
    for (const auto& [uri, hostAndPort] : rows) {
        const auto request = readRequest(requiredHeaders("OPTIONS"), uri);
        EXPECT_EQ(joined(request->getRequestURIHost(), request->getRequestURIPort()), hostAndPort);
        EXPECT_EQ(request->getNameAddress()->getURLString(), request->getURI()->getString());
        request->setURI(nullptr);
        EXPECT_TRUE(request->getURL().isNil());
        EXPECT_EQ(joined(request->getRequestURIHost(), request->getRequestURIPort()), "|0");
    }
}

/** A header of the Request-URI replaces an earlier one of the same full or compact name. Content-Length is that of the body. */
TEST(RequestTest, HeadersOfTheRequestURIComeOnce) {
    const auto headers = [](const std::string& uriHeaders) {
        return outcomeOf([&] {
            const auto target = KxHandle<KxURI>(new KxSipURL(("sip:t@h;lr?" + uriHeaders).c_str()));
            const auto from = KxMake<KxSipFromHeader>("<sip:a@h>");
            const auto contact = KxMake<KxSipContactHeader>("<sip:c@h>");
            const KxSipInviteMessage invite(target, from, KxMake<KxSipToHeader>("<sip:b@h>"), contact, "i", 1, nullptr,
                                            nullptr, 0);
            EXPECT_EQ(startLineOf(invite), "INVITE sip:t@h;lr SIP/2.0");
            const std::string text = written(invite);
            return text.substr(text.find("To:"));
        });
    };
    const std::string begin = "To: <sip:b@h>\r\n";
    const std::string end = "Contact: <sip:c@h>\r\nCall-ID: i\r\nCSeq: 1 INVITE\r\n";
    EXPECT_EQ(headers("s=a;Subject=b;X-A=1;x-a=2"),
              begin + "Subject: b\r\nX-A: 2\r\n" + end + "Content-Length: 0\r\n\r\n");
    EXPECT_EQ(headers("f=sip:x;From=sip:y"), begin + "From: <sip:y>\r\n" + end + "Content-Length: 0\r\n\r\n");
    EXPECT_EQ(headers("Content-Length=5"), begin + "Content-Length: 0\r\n" + end + "\r\n");
    EXPECT_EQ(headers("body=xyz;Content-Type=a/b;l=2"),
              begin + "Content-Type: a/b\r\nContent-Length: 3\r\n" + end + "\r\nxyz");
}

TEST(RequestTest, InsertedViaStandsFirst) {
    const auto request = readRequest(requiredHeaders("OPTIONS"));
    request->insertViaHeader("h1", 5099, "tcp");
    request->insertViaHeader("h2", 5060, "UDP");
    EXPECT_THAT(written(*request), testing::StartsWith("OPTIONS sip:b@example.com SIP/2.0\r\n"
                                                       "Via: SIP/2.0/UDP h2:5060\r\nVia: SIP/2.0/TCP h1:5099\r\n"
                                                       "Via: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bK1\r\nFrom:"));
    EXPECT_THROW(request->insertViaHeader("h", 5060, "pigeon"), KxHandle<KxException>);
    const auto built = build({});
    built->insertViaHeader("h1", 5099, "tcp");
    EXPECT_THAT(written(*built), testing::EndsWith("Content-Length: 0\r\nVia: SIP/2.0/TCP h1:5099\r\n\r\n"));
}

TEST(RequestTest, IsValidComparesTheMethodExactly) {
    const auto other = readRequest(requiredHeaders("Options"));
    EXPECT_EQ(other->getStatus(), KX_STATUS_VALID);
    EXPECT_FALSE(other->isValid());
    EXPECT_FALSE(readRequest(requiredHeaders("OPTIONS") + "no colon\r\n")->isValid());
    EXPECT_FALSE(KxMake<KxSipUnknownRequest>("OPTIONS")->isValid());
}

TEST(RejectedByStackTest, TellsTheFirstReasonOfSeveral) {
    const std::string none = "Max-Forwards: 0\r\n";
    const std::string some = "Max-Forwards: 1\r\n";
    const std::string longest = "sip:" + std::string(1023 - 4, 'h');
    const std::tuple<const char*, std::string, std::string, const char*, unsigned> rows[] = {
        {"no hops left", "sip:b", none, nullptr, 483},
        {"no hops left, not to be ignored", "sip:b", none, "false", 483},
        {"no hops left, ignored", "sip:b", none, "true", 0},
        {"no hops left, setting can't be read", "sip:b", none, "perhaps", 483},
        {"no Max-Forwards", "sip:b", "", nullptr, 0},
        {"longest URI", longest, some, nullptr, 0},
        {"URI too long", longest + "h", some, nullptr, 414},
        {"hops before length", longest + "h", none, nullptr, 483},
        {"length where hops are ignored", longest + "h", none, "true", 414},
        {"status before hops", longest + "h", none + "no colon\r\n", nullptr, 1},
    };
    for (const auto& [name, uri, headers, ignore, expected] : rows) {
        SCOPED_TRACE(name);
        const auto request = readRequest(requiredHeaders("OPTIONS") + headers, uri);
        const Ignoring ignoring(ignore);
        unsigned code = 77;
        EXPECT_EQ(request->rejectedByStack(code), expected != 0);
        EXPECT_EQ(code, expected);
    }
}

TEST(TooManyHopsTest, TheSettingHoldsFromTheNextCallOn) {
    const auto request = readRequest(requiredHeaders("OPTIONS") + "Max-Forwards: 0\r\n");
    ClassLog log("tandril.kx.KxSipRequest", log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(request->tooManyHops());
    {
        const Ignoring ignoring("true");
        EXPECT_FALSE(request->tooManyHops());
    }
    EXPECT_TRUE(request->tooManyHops());
    EXPECT_EQ(std::ranges::count(log.records, log4cplus::INFO_LOG_LEVEL, &LogRecord::level), 3);
    EXPECT_THAT(log.texts(), ElementsAre("Got request with Max-Forwards set to 0",
                                         "Got request with Max-Forwards set to 0: ignoring it since "
                                         "tandril.sip.ignoreMaxForwards parameter is set",
                                         "Got request with Max-Forwards set to 0"));
}

TEST(TooManyHopsTest, MissingMaxForwardsIsNotedForThoseWhoAsk) {
    const std::string name = "tandril.sip.UAInterop.MaxForwards";
    const auto request = readRequest("Via: SIP/2.0/UDP h\r\nFrom: <sip:a>\r\nTo: <sip:b>\r\nCall-ID: c\r\n"
                                     "CSeq: 1 OPTIONS\r\n");
    ClassLog log(name, log4cplus::ERROR_LOG_LEVEL);
    EXPECT_FALSE(request->tooManyHops());
    EXPECT_THAT(log.texts(), IsEmpty());
    log4cplus::Logger::getInstance(name).setLogLevel(log4cplus::INFO_LOG_LEVEL);
    EXPECT_FALSE(request->tooManyHops());
    EXPECT_FALSE(readRequest(requiredHeaders("OPTIONS") + "Max-Forwards: 5\r\n")->tooManyHops());
    EXPECT_EQ(std::ranges::count(log.records, log4cplus::INFO_LOG_LEVEL, &LogRecord::level), 1);
    EXPECT_EQ(log.texts(),
              std::vector{"Received a SIP request with no Max-Forwards header. Set " + name +
                          " logger to ERROR level to mute this warning. Request:\nOPTIONS sip:b@example.com SIP/2.0\n"
                          "Via: SIP/2.0/UDP h\nFrom: <sip:a>\nTo: <sip:b>\nCall-ID: c\nCSeq: 1 OPTIONS\n"
                          "Content-Length: 0\n\n"});
}

TEST(TooManyHopsTest, ItsParameterIsRegisteredAtLoad) {
    const Oskan::ParameterInfo* const info = Oskan::ParameterInfoDB::getInstance().find(kIgnoreMaxForwards);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->type, Oskan::ParameterInfo::Type::Boolean);
    EXPECT_EQ(info->defaultValue, "false");
    EXPECT_THAT(info->description, testing::EndsWith("non-compliant UACs. See RFC3261 paragraph 8.1.1.6"));
}
