// Texts of any type: std::string, std::string_view and KxString are taken where const char* or KxString is, and are
// checked; const char* means what it always meant.

#include "sipobject/KxSipCallid.h"
#include "sipobject/KxSipTag.h"
#include "sipobject/address/KxTelURL.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

using namespace std::string_literals;

namespace {

const std::string kRefused = "KxSipParseError: Text contains CR, LF or NUL";

/** Expects that `call` does the same with the text in each type, refuses a line end in the new ones, and does not refuse
    it in a const char*. `state` is what a refused call must not change. */
template <class State, class Call>
void expectSame(const std::string& text, State state, Call call) {
    const auto outcome = [&](const auto& argument) { return outcomeOf([&] { return call(argument); }); };
    const std::string same = outcome(text.c_str());
    const std::string longer = text + "!";
    EXPECT_EQ(outcome(text), same);
    EXPECT_EQ(outcome(std::string_view(longer).substr(0, text.size())), same); // without a NUL at its end
    EXPECT_EQ(outcome(KxString(text)), same);
    const std::string before = state();
    for (const std::string& end : {"\r"s, "\n"s, "\0"s, "\r\nX: y"s}) {
        EXPECT_EQ(outcome(text + end), kRefused) << text;
        EXPECT_EQ(state(), before);
    }
    EXPECT_NE(outcome((text + "\n").c_str()), kRefused) << text;
}

/** Header classes that are built from one text. */
template <class... H>
void expectBuilt(const char* text) {
    const auto none = [] { return ""; };
    (expectSame(text, none, [](const auto& given) { return linesOf(*KxMake<H>(given)); }), ...);
}

template <class H, class... Calls>
void expectSet(const KxHandle<H>& header, Calls... calls) {
    const auto line = [&header] { return lineOf(*header); };
    (expectSame("ab", line, [&](const auto& text) { return calls(*header, text), line(); }), ...);
}

template <class... Calls>
void expectBoth(Calls... calls) {
    (expectSame(
         "ab", [] { return ""; }, calls),
     ...);
}

std::string bodyOf(const KxSipMessage& message) {
    return std::to_string(message.getBodyLength()) + " " + std::string(message.getBodyType().view()) + " " +
           escaped({message.hasBody() ? message.getBody() : "", message.getStoredBodyLength()});
}

} // namespace

TEST(TextParameterTest, HeadersTakeAnyText) {
    expectBuilt<KxSipAllowHeader, KxSipAllowEventsHeader, KxSipAcceptEncodingHeader, KxSipAcceptLanguageHeader,
                KxSipContentDispositionHeader, KxSipContentEncodingHeader, KxSipContentTypeHeader, KxSipEventHeader,
                KxSipExpiresHeader, KxSipInReplyToHeader, KxSipPriorityHeader, KxSipProxyRequireHeader,
                KxSipRequireHeader, KxSipSessionHeader, KxSipSupportedHeader, KxSipUnsupportedHeader>("ab");
    expectBuilt<KxSipCallIdHeader, KxSipOrganizationHeader, KxSipResponseKeyHeader, KxSipServerHeader,
                KxSipSubjectHeader, KxSipTimestampHeader, KxSipUserAgentHeader>("1");
    expectBuilt<KxSipAlertInfoHeader, KxSipAuthenticationInfoHeader, KxSipCallInfoHeader, KxSipCCDiversionHeader,
                KxSipContactHeader, KxSipErrorInfoHeader, KxSipFromHeader, KxSipRecordRouteHeader,
                KxSipReferredByHeader, KxSipReferToHeader, KxSipRouteHeader, KxSipToHeader>("<sip:ab;x=1>");
    expectSet(
        KxMake<KxSipContactHeader>("<sip:h>"), [](auto& h, const auto& t) { h.setQValue(t); },
        [](auto& h, const auto& t) { h.setExpires(t); }, [](auto& h, const auto& t) { h.setComment(t); },
        [](auto& h, const auto& t) { h.setParameter("x", t); });
    expectSet(KxMake<KxSipFromHeader>("<sip:h>"), [](auto& h, const auto& t) { h.setTag(t); });
    expectSet(
        KxMake<KxSipReplacesHeader>("a", "b", "c"), [](auto& h, const auto& t) { h.setCallID(t); },
        [](auto& h, const auto& t) { h.setToTag(t); });
    expectSet(KxMake<KxSipRetryAfterHeader>(1U), [](auto& h, const auto& t) { h.setComment(t); });
    expectSet(
        KxMake<KxSipViaHeader>("h", 5060U, "UDP"), [](auto& h, const auto& t) { h.setTransport(t); },
        [](auto& h, const auto& t) { h.setBranch(t); }, [](auto& h, const auto& t) { h.setParameter("x", t); });
}

TEST(TextParameterTest, TextsOfOneCallMayDiffer) {
    const KxSipCallid id("h");
    expectBoth([](const auto& t) { return linesOf(KxSipAcceptHeader(t, t)) + linesOf(KxSipAcceptHeader("a", t)); },
               [](const auto& t) { return linesOf(KxSipCSeqHeader(1, t)) + linesOf(KxSipRAckHeader(1, 2, t)); },
               [](const auto& t) { return linesOf(KxSipReplacesHeader("a", t, KxString("b"))); },
               [](const auto& t) { return linesOf(KxSipRetryAfterHeader(1, t)); },
               [](const auto& t) { return linesOf(KxSipTimestampHeader("1", t)); },
               [](const auto& t) { return linesOf(KxSipUnknownHeader("X", t)) + linesOf(KxSipUnknownHeader(t, "x")); },
               [](const auto& t) { return linesOf(KxSipViaHeader(t, 1, "UDP")); },
               [](const auto& t) { return linesOf(KxSipWarningHeader(300, "h", t)); });
    EXPECT_EQ(linesOf(KxSipReplacesHeader(id, KxSipTag("a"), "b"s)).substr(0, 20),
              "Replaces: "s + KxString(id.getValue(), 10).c_str());
    EXPECT_EQ(linesOf(KxSipCallIdHeader(id)), "Call-ID: "s + id.getValue());
    KxSipFromHeader from("<sip:h>;tag=1"s);
    KxSipToHeader to("<sip:h>");
    to.setTag(from.getTag());
    EXPECT_EQ(linesOf(to), "To: <sip:h>;tag=1");
    to.setTag(KxSipTag("a"));
    EXPECT_EQ(to.getTag().substr(0, 2), "a-");
    to.setTag(0); // a null text changes nothing
    to.setTag(""s);
    EXPECT_EQ(to.getTag().substr(0, 2), "a-");
    EXPECT_EQ(linesOf(KxSipAllowHeader(KxSipAllowHeader("ACK").getMethod())), "Allow: ACK");
    EXPECT_EQ(std::string_view(KxSipTag("ab"s)).substr(0, 3), "ab-");
    EXPECT_TRUE(std::string_view(KxSipCallid("ab"s)).ends_with("@ab"));
}

TEST(TextParameterTest, ARefusedEmptyTextIsMissing) {
    const auto missing = [](const auto& make) { return outcomeOf([&] { make(""s); }); };
    const std::string error = "KxSipParseError: Text is missing: ";
    EXPECT_EQ(missing([](auto t) { KxSipAllowHeader h(t); }), error + "Allow");
    EXPECT_EQ(missing([](auto t) { KxSipCallIdHeader h(t); }), error + "Call-ID");
    EXPECT_EQ(missing([](auto t) { KxSipReplacesHeader h("a", t, "b"); }), error + "from-tag");
    EXPECT_EQ(missing([](auto t) { KxSipUnknownRequest r(t); }), error + "method");
    EXPECT_EQ(missing([](auto t) { KxSipViaHeader h(t, 1, "UDP"); }), "KxSipParseError: Invalid Via header");
    EXPECT_EQ(missing([](auto t) { KxSipRequireHeader h(t); }), ""); // its grammar has it
    KxSipUnknownRequest viaString(KxString("FOO"));
    EXPECT_STREQ(viaString.getMethod(), "FOO");
}

TEST(TextParameterTest, MessagesTakeAnyText) {
    const auto build = [](const auto& m, const auto& f, const auto& c, const auto& t, const void* body) {
        const auto request = KxMake<KxSipUnknownRequest>(m, f, "<sip:b>", "", c, 1U, t, body, 2U);
        request->insertViaHeader(c, 5060, "UDP");
        const auto response = KxMake<KxSipResponse>(200, request, body, t, 2U);
        response->setReasonPhrase(f);
        const auto invite = KxMake<KxSipInviteMessage>(request->getURI(), request->getFromHeader(),
                                                       request->getToHeader(), nullptr, c, 1U, t, body, 2U);
        const auto ringing = KxMake<KxSipResponse>(180, invite, nullptr, nullptr, 0U);
        return dumpOf(*request) + dumpOf(*response) + dumpOf(*invite) + dumpOf(KxSipAckMessage(ringing, body, t, 2)) +
               dumpOf(KxSipPrackMessage(ringing, body, t, 2));
    };
    const std::string same = build("FOO", "<sip:a>", "c", "a/b", "xy");
    EXPECT_EQ(build("FOO"s, "<sip:a>"s, "c"s, "a/b"s, "xy"), same);
    EXPECT_EQ(build("FOO", "<sip:a>"s, KxString("c"), std::string_view("a/b"), "xy"), same);
    const auto refused = [&](const auto&... texts) { return outcomeOf([&] { return build(texts...); }); };
    EXPECT_EQ(refused("FOO\r\nX: y"s, "<sip:a>", "c", "a/b", "xy"), kRefused);
    EXPECT_EQ(refused("FOO", "<sip:a>\r\nX: y"s, "c", "a/b", "xy"), kRefused);
    EXPECT_EQ(refused("FOO", "<sip:a>", "c\r\nX: y"s, "a/b", "xy"), kRefused);
    EXPECT_EQ(refused("FOO", "<sip:a>", "c", "a/b\r\nX: y"s, "xy"), kRefused);
    EXPECT_EQ(refused("FOO", "<sip:a>", "c", ""s, "xy"), "KxSipParseError: Text is missing: Content-Type");
    KxSipInviteMessage mixed("<sip:a>"s, "<sip:b>", nullptr, KxSipCallid("h"), 1, nullptr, nullptr, 0);
    EXPECT_TRUE(mixed.getContactHeader().isNil());

    KxSipUnknownRequest request("FOO");
    request.setBody("a\0b\r\n"s, "a/b"s);
    EXPECT_EQ(bodyOf(request), "5 a/b " + escaped("a\0b\r\n"s));
    const std::string before = dumpOf(request);
    EXPECT_EQ(outcomeOf([&] { request.setBody("xy"s, ""s); }), "KxSipParseError: Text is missing: Content-Type");
    EXPECT_EQ(outcomeOf([&] { request.setBody("xy"s, "a/b\n"s); }), kRefused);
    EXPECT_EQ(dumpOf(request), before);
    request.setBody("xyz", "c/d");
    EXPECT_EQ(bodyOf(request), "3 c/d xyz");
}

TEST(TextParameterTest, AuthenticationTakesAnyText) {
    const auto response = [](const auto& user, const auto& password, const auto& body) {
        const auto challenge = KxMake<KxSipDigestChallengeInfo>("r"s);
        challenge->setProperty("algorithm", "MD5"s);
        challenge->setQopOptions("auth-int"s);
        const auto credentials = KxMake<KxSipDigestCredentialsInfo>(challenge, user, password);
        credentials->setMethod("FOO"s);
        credentials->setQop("auth-int", "c"s, 1);
        credentials->setEntityBody(body);
        const KxSipAuthorizationHeader header{KxHandle<KxSipCredentialsInfo>(credentials)};
        EXPECT_EQ(header.getDigestCredentials().get(), credentials.get());
        EXPECT_EQ(KxSipWWWAuthenticateHeader(challenge).getDigestChallenge().get(), challenge.get());
        return lineOf(header);
    };
    EXPECT_EQ(response("u"s, std::string_view("p"), "b"s), response("u", KxString("p"), "b"));
    EXPECT_NE(response("u", "p", "b\0c"s), response("u", "p", "b\0c")); // the whole body counts
    EXPECT_EQ(outcomeOf([&] { response("u\n"s, "p", ""); }), kRefused);
    EXPECT_TRUE(KxSipWWWAuthenticateHeader(nullptr).getDigestChallenge().isNil());
}

TEST(TextParameterTest, URIsTakeAnyText) {
    expectSame(
        "sip:a@h;x=1", [] { return ""; }, [](const auto& t) { return KxSipURL(t).getString().c_str() + ""s; });
    expectSame(
        "tel:+1;x=1", [] { return ""; }, [](const auto& t) { return KxTelURL(t).getString().c_str() + ""s; });
    expectSame(
        "Bob <sip:h>", [] { return ""; },
        [](const auto& t) {
            const KxSipNameAddress address(t);
            return joined(address.getDisplayName(), address.getURLString());
        });
    const auto url = KxMake<KxSipURL>("sip:h");
    EXPECT_EQ(KxSipNameAddress("Bob"s, url).getDisplayName(), "Bob");
    KxURI& uri = *url;
    EXPECT_EQ(uri.as<KxSipURL>(), url.get());
    EXPECT_EQ(std::as_const(uri).as<KxTelURL>(), nullptr);
}

namespace {

/** user|password|host|port of the URL as it is read from its own text, from a request line, and from a header line with
    another URL after it, in which a quote could end. */
std::vector<std::string> readBack(const KxSipURL& url) {
    const auto fields = [](const KxSipURL& read) {
        return joined(read.getUser(), read.getUserPassword(), read.getHost(), read.hasPort() ? read.getPort() : 0,
                      read.getParameters());
    };
    const std::string text(url.getString().view());
    const auto message = readMessage("FOO " + text + " SIP/2.0\r\nContact: <" + text + ">, <sip:\"@\"x@y>\r\n\r\n");
    const auto* const request = dynamic_cast<const KxSipRequest*>(message.get());
    const KxHandle<KxSipContactHeader> contact = message->getContactHeader();
    return {fields(url), fields(KxSipURL(text)), fields(*request->getURL()),
            contact.isNil() || contact->getURL().isNil() ? "" : fields(*contact->getURL())};
}

} // namespace

TEST(TextParameterTest, PartsOfURLsAreReadBack) {
    struct Part {
        void (KxSipURL::*set)(KxSipText);
        const char* refused; ///< Of the characters after the blank.
    };
    const Part parts[] = {{&KxSipURL::setUser, "\"&:<>@\x7f"},
                          {&KxSipURL::setUserPassword, "\"&,:;<>?@\x7f"},
                          {&KxSipURL::setHost, "\"&,:;<>?@\x7f"}};
    for (const Part& part : parts) {
        std::string refused;
        for (int c = 0; c < 256; ++c) {
            for (const std::string& text :
                 {"a"s + static_cast<char>(c) + "b", ""s + static_cast<char>(c), "a"s + static_cast<char>(c)}) {
                KxSipURL url("sip:u:p@h:5;x=\"1\"");
                const std::vector<std::string> before = readBack(url);
                if (outcomeOf([&] { (url.*part.set)(text); }).empty()) {
                    EXPECT_THAT(readBack(url), testing::Each(readBack(url)[0])) << escaped(text);
                    EXPECT_NE(readBack(url)[0], before[0]);
                } else {
                    EXPECT_EQ(readBack(url), before);
                    refused += c > ' ' && text.size() == 3 ? std::string(1, static_cast<char>(c)) : "";
                }
            }
        }
        EXPECT_EQ(refused, part.refused);
    }
    KxSipURL url;
    url.setUser("\"a@b:c\"d"); // in quotes, but not across them
    EXPECT_EQ(outcomeOf([&] { url.setUser("\"a\"@\"b\""); }), "KxSipParseError: Invalid user in SIP URL");
    EXPECT_EQ(outcomeOf([&] { url.setHost(nullptr); }), "KxSipParseError: Invalid host in SIP URL");
    EXPECT_EQ(outcomeOf([&] { url.setPort(65536); }), "KxSipParseError: Invalid port in SIP URL");
    url.setHost(KxString("h"));
    url.setPort(65535);
    url.setUserPassword("p"s);
    url.setParameter("x", "1"s);
    EXPECT_EQ(outcomeOf([&] { url.setParameter("x", "1\n"s); }), kRefused);
    EXPECT_THAT(readBack(url), testing::Each("\"a@b:c\"d|p|h|65535|x=1"));
    url.removePort();
    url.setUser(nullptr);
    EXPECT_EQ(outcomeOf([&] { url.setUserPassword("p"); }), "KxSipParseError: Invalid password in SIP URL");
    EXPECT_TRUE(url == KxSipURL("sip:h;x=1"));
}
