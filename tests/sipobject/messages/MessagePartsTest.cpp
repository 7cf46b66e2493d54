#include "sipobject/KxSipCallid.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/messages/KxSipBranch.h"
#include "sipobject/messages/KxSipRegisterMessage.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "sipobject/messages/KxSipSubscribeMessage.h"
#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

#include <regex>
#include <set>

/** The message as it is written, with LF line ends, and with R for what is random: UUIDs and the CSeq number of a
    request that was given none. It must read back with status 0 and be written the same again. */
static std::string textOf(const KxSipMessage& message) {
    const std::string text = written(message);
    const KxHandle<KxSipMessage> again = readMessage(text);
    EXPECT_EQ(again->getStatus(), KX_STATUS_VALID) << text;
    EXPECT_EQ(written(*again), text);
    static const std::regex kUuid("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[0-9a-f]{4}-[0-9a-f]{12}");
    return std::regex_replace(std::regex_replace(text, kUuid, "R"), std::regex("\r"), "");
}

/** A request or response of a dialog between alice and bob through two proxies, the second of which is as given. */
static std::string headers(const std::string& proxy, const std::string& contact, const std::string& toTag) {
    return "Via: SIP/2.0/UDP 10.0.0.1:5060;branch=z9hG4bKi\r\n"
           "Record-Route: <" +
           proxy +
           ">\r\nRecord-Route: <sip:p1.example;lr>\r\n"
           "From: Alice <sip:alice@a.example>;tag=ta;x=1\r\nTo: <sip:bob@b.example>" +
           toTag +
           "\r\n"
           "Call-ID: c1\r\nCSeq: 7 INVITE\r\nContact: <" +
           contact + ">\r\n";
}

static KxHandle<KxSipInviteMessage> receivedInvite(const std::string& proxy) {
    return as<KxSipInviteMessage>(
        readMessage("INVITE sip:bob@10.0.0.2 SIP/2.0\r\nMax-Forwards: 68\r\nTimestamp: 5\r\n" +
                    headers(proxy, "sip:alice@10.0.0.1", "") + "Content-Length: 0\r\n\r\n"));
}

static KxHandle<KxSipResponse> receivedResponse(const std::string& status, const std::string& proxy,
                                                const std::string& more = "") {
    return as<KxSipResponse>(readMessage("SIP/2.0 " + status + "\r\n" + more +
                                         headers(proxy, "sip:bob@10.0.0.2?a=1", ";tag=tb") +
                                         "Content-Length: 0\r\n\r\n"));
}

TEST(MessagePartsTest, RequestHasTheNamedPartsAndDefaults) {
    const std::string sdp = "v=0\r\n";
    const auto invite = KxSipInviteMessage::sBuild({.from = "Alice <sip:alice@a.example>",
                                                    .to = std::string("<sip:bob@b.example>"),
                                                    .contact = KxMake<KxSipContactHeader>("<sip:alice@10.0.0.1>"),
                                                    .cseq = 1,
                                                    .via = {.host = "10.0.0.1", .transport = "tcp", .rport = true},
                                                    .routes = {"<sip:p1.example;lr>", "<sip:p2.example;lr>"},
                                                    .contentType = "application/sdp",
                                                    .body = sdp});
    EXPECT_TRUE(
        std::regex_match(textOf(*invite), std::regex("INVITE sip:bob@b\\.example SIP/2\\.0\n"
                                                     "Via: SIP/2\\.0/TCP 10\\.0\\.0\\.1:5060;branch=z9hG4bKR;rport\n"
                                                     "Route: <sip:p1\\.example;lr>\nRoute: <sip:p2\\.example;lr>\n"
                                                     "Max-Forwards: 70\nFrom: Alice <sip:alice@a\\.example>;tag=R\n"
                                                     "To: <sip:bob@b\\.example>\nCall-ID: R@.*\nCSeq: 1 INVITE\n"
                                                     "Contact: <sip:alice@10\\.0\\.0\\.1>\nContent-Length: 5\n"
                                                     "Content-Type: application/sdp\n\nv=0\n")))
        << textOf(*invite);
    const auto given = KxMake<KxSipFromHeader>("<sip:a@h>");
    const auto options = KxSipRequest::sBuild("OPTIONS", {.requestUri = "<sip:r@h?Subject=x>",
                                                          .from = given,
                                                          .to = "<tel:+12>",
                                                          .callId = KxString("c"),
                                                          .cseq = 2,
                                                          .maxForwards = 0,
                                                          .via = {.host = "h", .port = 1, .branch = "z9hG4bKx"}});
    EXPECT_EQ(textOf(*options),
              "OPTIONS sip:r@h SIP/2.0\nVia: SIP/2.0/UDP h:1;branch=z9hG4bKx\nMax-Forwards: 0\nFrom: <sip:a@h>;tag=R\n"
              "To: <tel:+12>\nCall-ID: c\nCSeq: 2 OPTIONS\nContent-Length: 0\n\n");
    EXPECT_EQ(className(*options), "KxSipOptionsMessage");
    EXPECT_EQ(
        startLineOf(*KxSipRequest::sBuild("OPTIONS", {.from = "<sip:a@h>", .to = "<sip:b@h>", .routes = {"<sip:p>"}})),
        "OPTIONS sip:p SIP/2.0");
    EXPECT_FALSE(given->isTagPresent()) << "an object that is given stays as it is";
    EXPECT_EQ(className(*KxSipRequest::sBuild("FOO", {.from = "<sip:a@h>", .to = "<sip:b@h>"})), "KxSipUnknownRequest");
}

TEST(MessagePartsTest, PartsThatCannotBeAreRefused) {
    const KxSipCallid first; // looks up the name of this host, which stays
    const Balance balance;
    const auto built = [](const KxSipRequestParts& parts, const char* method = "OPTIONS") {
        const std::string outcome = outcomeOf([&] { return textOf(*KxSipRequest::sBuild(method, parts)); });
        return outcome.substr(0, outcome.find('\n'));
    };
    using Parts = KxSipRequestParts;
    const std::string error = "KxSipParseError: ";
    const Parts good{.from = "<sip:a@h>", .to = "<sip:b@h>", .via = {.host = "h"}};
    const auto with = [&good](auto change) {
        Parts parts = good;
        change(parts);
        return parts;
    };
    EXPECT_EQ(built(good), "OPTIONS sip:b@h SIP/2.0");
    EXPECT_EQ(built({.to = "<sip:b@h>"}), error + "Text is missing: From");
    EXPECT_EQ(built({.from = "<sip:b@h>"}), error + "Text is missing: To");
    for (const char* method : {"INVITE", "NOTIFY", "REFER", "SUBSCRIBE", "UPDATE"}) {
        EXPECT_EQ(built(good, method), error + "Text is missing: Contact") << method;
    }
    for (const char* method : {"A B", "A\r\nB", "A:"}) {
        EXPECT_THAT(built(good, method), testing::StartsWith(error)) << method;
    }
    EXPECT_EQ(built(good, "SIP"), error + "Not a method of requests");
    EXPECT_EQ(built(good, nullptr), error + "Text is missing: method");
    const Parts refused[] = {
        with([](Parts& parts) { parts.from = "<sip:a@h>\r\nX: 1"; }),
        with([](Parts& parts) { parts.to = std::string_view("<sip:a@h>\0", 10); }),
        with([](Parts& parts) { parts.to = "<sip:a@h>, <sip:b@h>"; }),
        with([](Parts& parts) { parts.to = "Bob <sip"; }),
        with([](Parts& parts) { parts.requestUri = "sip:b@h SIP/2.0"; }),
        with([](Parts& parts) { parts.callId = "a b"; }),
        with([](Parts& parts) { parts.callId = "a\nb"; }),
        with([](Parts& parts) { parts.routes = {""}; }),
        with([](Parts& parts) { parts.via.host = "h;received=1"; }),
        with([](Parts& parts) { parts.via.transport = "FOO"; }),
        with([](Parts& parts) { parts.via.branch = "a;b"; }),
        with([](Parts& parts) { parts.body = "x"; }),
        with([](Parts& parts) {
            parts.body = "x";
            parts.contentType = "a/b\r\nX: 1";
        }),
    };
    for (const Parts& parts : refused) {
        EXPECT_THAT(built(parts), testing::StartsWith(error)) << &parts - refused;
    }
}

TEST(MessagePartsTest, ResponseHasWhatItsCodeAsksFor) {
    const auto invite = receivedInvite("sip:p2.example;lr");
    const std::string repeated =
        "Via: SIP/2.0/UDP 10.0.0.1:5060;branch=z9hG4bKi\nFrom: Alice <sip:alice@a.example>;tag=ta;x=1\n"
        "To: <sip:bob@b.example>";
    const std::string rest = "\nCall-ID: c1\nCSeq: 7 INVITE\n";
    const std::string recordRoute = "Record-Route: <sip:p2.example;lr>\nRecord-Route: <sip:p1.example;lr>\n";
    EXPECT_EQ(textOf(*KxSipResponse::sBuild(*invite, {.statusCode = 100})),
              "SIP/2.0 100 Trying\n" + repeated + rest + "Timestamp: 5\nContent-Length: 0\n\n");
    EXPECT_EQ(textOf(*KxSipResponse::sBuild(*invite, {.statusCode = 180})),
              "SIP/2.0 180 Ringing\n" + repeated + ";tag=R" + rest + recordRoute + "Content-Length: 0\n\n");
    EXPECT_EQ(textOf(*KxSipResponse::sBuild(
                  *invite, {.toTag = "tb", .contact = "<sip:bob@h>", .contentType = "a/b", .body = "x"})),
              "SIP/2.0 200 Ok\n" + repeated + ";tag=tb" + rest + recordRoute +
                  "Contact: <sip:bob@h>\nContent-Length: 1\nContent-Type: a/b\n\nx");
    EXPECT_EQ(textOf(*KxSipResponse::sBuild(*invite, {.statusCode = 404, .reasonPhrase = "Gone", .toTag = "tb"})),
              "SIP/2.0 404 Gone\n" + repeated + ";tag=tb" + rest + "Content-Length: 0\n\n");
    const std::string error = "KxSipParseError: ";
    const auto refused = [&](const KxSipRequest& request, const KxSipResponseParts& parts) {
        return outcomeOf([&] { return textOf(*KxSipResponse::sBuild(request, parts)); });
    };
    EXPECT_EQ(refused(*invite, {}), error + "Text is missing: Contact");
    EXPECT_EQ(refused(*invite, {.statusCode = 99}), error + "Invalid Response code");
    EXPECT_EQ(refused(*invite, {.statusCode = 404, .toTag = "a;b"}), error + "Not a token: To tag");
    EXPECT_EQ(refused(*invite, {.statusCode = 404, .reasonPhrase = "a\nb"}), error + "Text contains CR, LF or NUL");
    EXPECT_EQ(refused(*invite, {.statusCode = 404, .reasonPhrase = std::string(128, 'x')}),
              error + "The reason phrase is too long");
    const auto ack = KxSipAckMessage::sFor(*invite, *receivedResponse("486 Busy", "sip:p2.example;lr"));
    EXPECT_EQ(refused(*ack, {}), error + "An ACK has no response");
}

TEST(MessagePartsTest, AckAndCancelOfAnInviteAreInItsTransaction) {
    const auto invite = receivedInvite("sip:p2.example;lr");
    const std::string digest =
        "Authorization: Digest username=\"u\",realm=\"r\",nonce=\"n\",response=\"x\",uri=\"sip:a\"";
    const std::string proxyDigest = "Proxy-" + digest;
    for (const std::string& line : {std::string("Route: <sip:r1;lr>"), std::string("Require: 100rel"),
                                    std::string("Proxy-Require: x"), digest, proxyDigest}) {
        invite->addHeader(readHeader(line), false);
    }
    const std::string same = "Via: SIP/2.0/UDP 10.0.0.1:5060;branch=z9hG4bKi\nRoute: <sip:r1;lr>\nMax-Forwards: 70\n"
                             "From: Alice <sip:alice@a.example>;tag=ta;x=1\nTo: <sip:bob@b.example>";
    EXPECT_EQ(textOf(*KxSipCancelMessage::sFor(*invite)),
              "CANCEL sip:bob@10.0.0.2 SIP/2.0\n" + same + "\nCall-ID: c1\nCSeq: 7 CANCEL\nContent-Length: 0\n\n");
    EXPECT_EQ(textOf(*KxSipAckMessage::sFor(*invite, *receivedResponse("486 Busy", "sip:p2.example;lr"))),
              "ACK sip:bob@10.0.0.2 SIP/2.0\n" + same + ";tag=tb\nCall-ID: c1\nCSeq: 7 ACK\nContent-Length: 0\n\n");
    EXPECT_EQ(textOf(*KxSipAckMessage::sFor(*invite, *receivedResponse("200 OK", "sip:p2.example;lr"))),
              "ACK sip:bob@10.0.0.2 SIP/2.0\nVia: SIP/2.0/UDP 10.0.0.1:5060;branch=z9hG4bKR\n"
              "Route: <sip:p1.example;lr>\nRoute: <sip:p2.example;lr>\nMax-Forwards: 70\n"
              "From: Alice <sip:alice@a.example>;tag=ta\nTo: <sip:bob@b.example>;tag=tb\nCall-ID: c1\nCSeq: 7 ACK\n"
              "Content-Length: 0\n" +
                  digest + "\n" + proxyDigest + "\n\n");
}

TEST(MessagePartsTest, RequestsWithinADialogFollowItsRouteSet) {
    const std::string strict = "sip:p2.example";
    const std::string loose = "sip:p2.example;lr";
    const std::string toBob =
        "Max-Forwards: 70\nFrom: Alice <sip:alice@a.example>;tag=ta\nTo: <sip:bob@b.example>;tag=tb\n";
    const std::string toAlice =
        "Max-Forwards: 70\nFrom: <sip:bob@b.example>;tag=tb\nTo: Alice <sip:alice@a.example>;tag=ta\n";
    const auto invite = receivedInvite(loose);
    const auto progress = receivedResponse("183 Progress", "sip:early.example;lr", "RSeq: 9\r\nRequire: 100rel\r\n");

    KxSipDialog caller = KxSipDialog::sOfCaller(*invite, *progress);
    const KxSipDialogParts viaH{.via = {.host = "h", .branch = "z9hG4bKb"}};
    const std::string via = "Via: SIP/2.0/UDP h:5060;branch=z9hG4bKb\n";
    EXPECT_EQ(textOf(*KxSipPrackMessage::sFor(caller, *progress, viaH)),
              "PRACK sip:bob@10.0.0.2 SIP/2.0\n" + via + "Route: <sip:p1.example;lr>\nRoute: <sip:early.example;lr>\n" +
                  toBob + "Call-ID: c1\nCSeq: 8 PRACK\nContent-Length: 0\nRAck: 9 7 INVITE\n\n");
    caller.confirm(*receivedResponse("200 OK", loose));
    EXPECT_EQ(textOf(*KxSipByeMessage::sWithin(caller, viaH)),
              "BYE sip:bob@10.0.0.2 SIP/2.0\n" + via + "Route: <sip:p1.example;lr>\nRoute: <sip:p2.example;lr>\n" +
                  toBob + "Call-ID: c1\nCSeq: 9 BYE\nContent-Length: 0\n\n");

    const auto ok = KxSipResponse::sBuild(*receivedInvite(strict), {.toTag = "tb", .contact = "<sip:bob@10.0.0.2>"});
    KxSipDialog callee = KxSipDialog::sOfCallee(*receivedInvite(strict), *ok);
    const std::string info =
        textOf(*KxSipRequest::sWithin(callee, "INFO", {.via = viaH.via, .contentType = "a/b", .body = "x"}));
    EXPECT_EQ(std::regex_replace(info, std::regex("CSeq: \\d+"), "CSeq: N"),
              "INFO sip:p2.example SIP/2.0\n" + via + "Route: <sip:p1.example;lr>\nRoute: <sip:alice@10.0.0.1>\n" +
                  toAlice + "Call-ID: c1\nCSeq: N INFO\nContent-Length: 1\nContent-Type: a/b\n\nx");

    const auto bye = KxSipByeMessage::sWithin(callee);
    EXPECT_EQ(bye->getCSeqHeader()->getSeqNumber(), callee.getLocalSequence());
    EXPECT_TRUE(caller.matches(*bye));
    EXPECT_FALSE(callee.matches(*bye));
    EXPECT_TRUE(caller.matches(*progress));
    callee.refresh(*KxSipRequest::sWithin(caller, "UPDATE", {.contact = "<sip:alice@10.9.9.9>"}));
    EXPECT_EQ(callee.getRemoteTarget().getString(), "sip:alice@10.9.9.9");

    const std::uint32_t before = caller.getLocalSequence();
    const std::string error = "KxSipParseError: ";
    const auto refused = [](auto make) { return outcomeOf([&] { static_cast<void>(make()); }); };
    EXPECT_EQ(refused([&] { return KxSipRequest::sWithin(caller, "ACK", {}); }),
              error + "ACK and CANCEL have the CSeq number of their INVITE");
    EXPECT_EQ(refused([&] { return KxSipInviteMessage::sWithin(caller); }), error + "Text is missing: Contact");
    EXPECT_EQ(refused([&] { return KxSipPrackMessage::sFor(caller, *ok); }),
              error + "A PRACK needs a response with RSeq and CSeq");
    EXPECT_EQ(caller.getLocalSequence(), before) << "a request that was not built has no number";
    EXPECT_EQ(refused([&] { return KxSipAckMessage::sFor(*invite, *progress); }),
              error + "A provisional response has no ACK");
    EXPECT_EQ(refused([&] { return KxSipDialog::sOfCaller(*invite, *receivedResponse("404 No", loose)); }),
              error + "Only a response from 101 to 299 makes a dialog");
    const auto other = KxSipSubscribeMessage::sBuild({.from = "<sip:a@h>", .to = "<sip:b@h>", .contact = "<sip:a@h>"});
    EXPECT_EQ(refused([&] { return KxSipDialog::sOfCaller(*other, *progress); }),
              error + "The response is not for the request");
    const auto noContact =
        as<KxSipInviteMessage>(readMessage("INVITE sip:b@h SIP/2.0\r\n" + requiredHeaders("INVITE") + "\r\n"));
    const auto bare = KxSipResponse::sBuild(*noContact, {.statusCode = 180});
    const auto bareOk = as<KxSipResponse>(readMessage("SIP/2.0 200 OK\r\n" + requiredHeaders("INVITE") + "\r\n"));
    EXPECT_EQ(KxSipDialog::sOfCaller(*noContact, *bare).getRemoteTarget().getString(), "sip:b@h");
    EXPECT_EQ(refused([&] { return KxSipDialog::sOfCaller(*noContact, *bareOk); }),
              error + "Header is missing: Contact");
    noContact->setURI(nullptr);
    EXPECT_EQ(refused([&] { return KxSipDialog::sOfCaller(*noContact, *bare); }), error + "Header is missing: Contact");
    EXPECT_EQ(refused([&] { return KxSipCancelMessage::sFor(*noContact); }),
              error + "Can't build SIP request without Request-URI");
    EXPECT_EQ(refused([&] { return KxSipDialog::sOfCallee(*noContact, *bare); }), error + "Header is missing: Contact");
}

TEST(MessagePartsTest, StatelessBranchesAreTheSameForOneTransactionOnly) {
    const auto branch = [](const std::string& method, const std::string& via, const std::string& callId) {
        return std::string(
            KxSipBranch::sStateless(
                *as<KxSipRequest>(readMessage(method + " sip:b@h SIP/2.0\r\nVia: SIP/2.0/UDP " + via +
                                              "\r\nFrom: <sip:a@h>;tag=1\r\nTo: <sip:b@h>\r\n"
                                              "Call-ID: " +
                                              callId + "\r\nCSeq: 1 " + method + "\r\nContent-Length: 0\r\n\r\n")))
                .view());
    };
    const std::string first = branch("INVITE", "h;branch=z9hG4bK1", "c");
    EXPECT_THAT(first, testing::MatchesRegex("z9hG4bK[0-9a-f]{32}"));
    EXPECT_EQ(branch("INVITE", "h:5060;branch=z9hG4bK1;received=1.2.3.4", "other"), first);
    EXPECT_EQ(branch("CANCEL", "h;branch=z9hG4bK1", "c"), first);
    EXPECT_EQ(branch("INVITE", "h;branch=1", "c"), branch("CANCEL", "h;branch=1", "c"));
    const std::set<std::string> all = {first,
                                       branch("INVITE", "g;branch=z9hG4bK1", "c"),
                                       branch("INVITE", "h;branch=z9hG4bK2", "c"),
                                       branch("INVITE", "h:5;branch=z9hG4bK1", "c"),
                                       branch("INVITE", "h;branch=1", "c"),
                                       branch("INVITE", "h;branch=1", "d"),
                                       branch("INVITE", "h", "c")};
    EXPECT_EQ(all.size(), 7U);
}

TEST(MessagePartsTest, SourceOfARequestIsNotedInItsTopVia) {
    const auto viaFrom = [](const std::string& via) {
        const auto request =
            as<KxSipRequest>(readMessage("OPTIONS sip:b@h SIP/2.0\r\n" + requiredHeaders("OPTIONS") + "\r\n"));
        request->replace(KxHandleCast<KxSipViaHeader>(readHeader("v: SIP/2.0/UDP " + via + ", SIP/2.0/UDP other")));
        KxInetAddress source;
        source.initFromAddress("10.0.0.9");
        request->setSource(source, 999, KxSocketImpl::TCP);
        EXPECT_EQ(joined(request->getConnectionAddress().getHostAddress(), request->getConnectionPort(),
                         request->getConnectionTransport()),
                  "10.0.0.9|999|1");
        return linesOf(*request->getViaHeader());
    };
    const std::string other = " & Via: SIP/2.0/UDP other";
    EXPECT_EQ(viaFrom("10.0.0.9:5060;branch=1"), "v: SIP/2.0/UDP 10.0.0.9:5060;branch=1" + other);
    EXPECT_EQ(viaFrom("h;branch=1"), "v: SIP/2.0/UDP h;branch=1;received=10.0.0.9" + other);
    EXPECT_EQ(viaFrom("10.0.0.9;rport"), "v: SIP/2.0/UDP 10.0.0.9;rport=999;received=10.0.0.9" + other);
}
