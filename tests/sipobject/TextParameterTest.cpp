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

/** Expects that each call does the same with the text in each type, refuses line ends in the new ones, and does not
    refuse them in a const char*. */
template <class... Calls>
void expectSame(const std::string& text, Calls... calls) {
    const auto expect = [&](auto call) {
        const auto outcome = [&](const auto& argument) { return outcomeOf([&] { return call(argument); }); };
        const std::string same = outcome(text.c_str());
        EXPECT_EQ(outcome(text), same);
        EXPECT_EQ(outcome(std::string_view(text + "!").substr(0, text.size())), same); // without a NUL at its end
        EXPECT_EQ(outcome(KxString(text)), same);
        for (const std::string& end : {"\r"s, "\n"s, "\0"s, "\r\nX: y"s}) {
            EXPECT_EQ(outcome(text + end), kRefused) << same;
        }
        EXPECT_NE(outcome((text + "\n").c_str()), kRefused) << same;
    };
    (expect(calls), ...);
}

/** Calls that build a header from one text. */
template <class... H>
void expectBuilt(const char* text) {
    expectSame(text, [](const auto& given) { return linesOf(*KxMake<H>(given)); }...);
}

/** A call of a setter of a copy of the header. */
template <class H, class Set>
auto setting(const H& header, Set set) {
    return [header, set](const auto& text) {
        H changed(header);
        if (outcomeOf([&] { set(changed, text); }).empty()) {
            return linesOf(changed);
        }
        EXPECT_EQ(linesOf(changed), linesOf(header));
        return kRefused;
    };
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
    const KxSipContactHeader contact("<sip:h>");
    const KxSipViaHeader via("h", 1, "UDP");
    expectSame(
        "ab", setting(contact, [](auto& h, const auto& t) { h.setQValue(t); }),
        setting(contact, [](auto& h, const auto& t) { h.setComment(t); }),
        setting(contact, [](auto& h, const auto& t) { h.setParameter("x", t); }),
        setting(KxSipFromHeader("<sip:h>"), [](auto& h, const auto& t) { h.setTag(t); }),
        setting(KxSipReplacesHeader("a", "b", "c"), [](auto& h, const auto& t) { h.setCallID(t); }),
        setting(KxSipReplacesHeader("a", "b", "c"), [](auto& h, const auto& t) { h.setToTag(t); }),
        setting(via, [](auto& h, const auto& t) { h.setTransport(t); }),
        setting(via, [](auto& h, const auto& t) { h.setParameter("x", t); }),
        // other texts of the same call may be of other types
        [](const auto& t) { return linesOf(KxSipAcceptHeader(t, t)) + linesOf(KxSipAcceptHeader("a", t)); },
        [](const auto& t) { return linesOf(KxSipCSeqHeader(1, t)) + linesOf(KxSipRAckHeader(1, 2, t)); },
        [](const auto& t) { return linesOf(KxSipReplacesHeader("a", t, KxString("b"))); },
        [](const auto& t) { return linesOf(KxSipRetryAfterHeader(1, t)); },
        [](const auto& t) { return linesOf(KxSipTimestampHeader("1", t)); },
        [](const auto& t) { return linesOf(KxSipUnknownHeader("X", t)) + linesOf(KxSipUnknownHeader(t, "x")); },
        [](const auto& t) { return linesOf(KxSipViaHeader(t, 1, "UDP")); },
        [](const auto& t) { return linesOf(KxSipWarningHeader(300, "h", t)); });
}

TEST(TextParameterTest, GeneratedValuesAreTexts) {
    const KxSipCallid id("ab"s);
    EXPECT_TRUE(linesOf(KxSipCallIdHeader(id)).ends_with("@ab"));
    EXPECT_EQ(KxSipReplacesHeader(id, KxSipTag("a"), "b"s).getCallID(), id.getValue());
    KxSipToHeader to("<sip:h>");
    to.setTag(KxSipTag("cd"s));
    EXPECT_EQ(to.getTag().substr(0, 3), "cd-");
    to.setTag(KxSipFromHeader("<sip:h>;tag=1"s).getTag());
    to.setTag(0); // a null text changes nothing
    to.setTag(""s);
    EXPECT_EQ(linesOf(to), "To: <sip:h>;tag=1");
}

TEST(TextParameterTest, ARefusedEmptyTextIsMissing) {
    const auto missing = [](const auto& make) { return outcomeOf([&] { make(""s); }); };
    const std::string error = "KxSipParseError: Text is missing: ";
    EXPECT_EQ(missing([](auto t) { KxSipAllowHeader h(t); }), error + "Allow");
    EXPECT_EQ(missing([](auto t) { KxSipCallIdHeader h(t); }), error + "Call-ID");
    EXPECT_EQ(missing([](auto t) { KxSipReplacesHeader h("a", t, "b"); }), error + "from-tag");
    EXPECT_EQ(missing([](auto t) { KxSipUnknownRequest r(t); }), error + "method");
    EXPECT_EQ(missing([](auto t) { KxSipRequireHeader h(t); }), ""); // its grammar has it
    EXPECT_STREQ(KxSipUnknownRequest(KxString("FOO")).getMethod(), "FOO");
}

TEST(TextParameterTest, MessagesTakeAnyText) {
    const auto invite =
        KxMake<KxSipInviteMessage>("<sip:a>"s, "<sip:b>", nullptr, KxSipCallid("h"), 1U, "", nullptr, 0U);
    const KxHandle<KxURI> uri = invite->getURI();
    const KxHandle<KxSipFromHeader> from = invite->getFromHeader();
    const KxHandle<KxSipToHeader> to = invite->getToHeader();
    const auto address = KxMake<KxSipNameAddress>(""s, uri);
    invite->insertViaHeader("h"s, 1, "UDP");
    const auto ringing = KxMake<KxSipResponse>(180, invite, nullptr, nullptr, 0U);
    using Other = KxSipUnknownRequest;
    using Known = KxSipInviteMessage;
    const auto changed = [](auto message, auto change) { return change(message), dumpOf(message); };
    expectSame(
        "ab", [](const auto& t) { return dumpOf(Other(t, "<sip:a>", "<sip:b>", "", "c", 1, "d/e", "xy", 2)); },
        [](const auto& t) { return dumpOf(Other("FOO", "<sip:a>", "<sip:b>", "", t, 1, "d/e", "xy", 2)); },
        [](const auto& t) { return dumpOf(Other("FOO", "<sip:a>", "<sip:b>", "", "c", 1, t, "xy", 2)); },
        [&](const auto& t) { return dumpOf(Other("FOO", address, from, to, nullptr, t, 1, "", nullptr, 0)); },
        [&](const auto& t) { return dumpOf(Known(address, from, to, nullptr, t, 1, "", nullptr, 0)); },
        [&](const auto& t) { return dumpOf(Known(uri, from, to, nullptr, t, 1, "", nullptr, 0)); },
        [&](const auto& t) { return dumpOf(KxSipResponse(200, invite, "xy", t, 2)); },
        [&](const auto& t) { return dumpOf(KxSipAckMessage(ringing, "xy", t, 2)); },
        [&](const auto& t) { return dumpOf(KxSipPrackMessage(ringing, "xy", t, 2)); },
        [&](const auto& t) { return changed(*ringing, [&](auto& m) { m.setReasonPhrase(t); }); },
        [&](const auto& t) { return changed(*invite, [&](auto& m) { m.insertViaHeader(t, 1, "UDP"); }); },
        [&](const auto& t) { return changed(*invite, [&](auto& m) { m.setBody("xy", t); }); });
    expectSame(
        "<sip:a>", [](const auto& t) { return dumpOf(Known(t, "<sip:b>", "", "c", 1, "", nullptr, 0)); },
        [](const auto& t) { return dumpOf(Known("<sip:b>", "<sip:b>", t, "c", 1, "", nullptr, 0)); });

    KxSipInviteMessage given(*invite);
    given.setBody("a\0b", "a/b", 3);
    KxSipInviteMessage taken(*invite);
    taken.setBody("a\0b"s, "a/b"s);
    const std::string untyped = "KxSipParseError: Text is missing: Content-Type";
    EXPECT_EQ(outcomeOf([&] { taken.setBody("xy"s, ""s); }), untyped);
    EXPECT_EQ(outcomeOf([&] { KxSipResponse(200, invite, "xy", ""s, 2); }), untyped);
    EXPECT_EQ(outcomeOf([&] { taken.setBody("xy"s, "a/b\n"s); }), kRefused);
    EXPECT_EQ(dumpOf(taken), dumpOf(given));
    taken.setBody(""s, nullptr);
    EXPECT_EQ(dumpOf(taken), dumpOf(*invite));
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
    expectSame("sip:a@h;x=1", [](const auto& t) { return joined(KxSipURL(t).getString()); });
    expectSame("tel:+1;x=1", [](const auto& t) { return joined(KxTelURL(t).getString()); });
    expectSame("Bob <sip:h>", [](const auto& t) { return joined(KxSipNameAddress(t).getURLString()); });
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
    const auto message = readMessage("FOO " + text + " SIP/2.0\r\n" + requiredHeaders("FOO") + "Contact: <" + text +
                                     ">, <sip:\"@\"x@y>\r\n\r\n");
    const auto* const request = dynamic_cast<const KxSipRequest*>(message.get());
    const KxHandle<KxSipContactHeader> contact = message->getContactHeader();
    return {fields(url), fields(KxSipURL(text)), fields(*request->getURL()),
            contact.isNil() || contact->getURL().isNil() ? "" : fields(*contact->getURL())};
}

} // namespace

TEST(TextParameterTest, PartsOfURLsAreReadBack) {
    struct Part {
        void (KxSipURL::*set)(KxSipText);
        const KxString& (KxSipURL::*get)() const;
        const char* refused; ///< Of the characters after the blank.
    };
    const Part parts[] = {{&KxSipURL::setUser, &KxSipURL::getUser, "\"&:<>@\x7f"},
                          {&KxSipURL::setUserPassword, &KxSipURL::getUserPassword, "\"&,:;<>?@\x7f"},
                          {&KxSipURL::setHost, &KxSipURL::getHost, "\"&,:;<>?@\x7f"}};
    for (const auto& [set, get, expected] : parts) {
        std::string refused;
        for (int byte = 0; byte < 256; ++byte) {
            const std::string c(1, static_cast<char>(byte));
            for (const std::string& text : {"a" + c + "b", c, "a" + c}) {
                KxSipURL url("sip:user:pass@host:5;x=\"1\"");
                const bool isTaken = outcomeOf([&, member = set] { (url.*member)(text); }).empty();
                EXPECT_EQ((url.*get)() == text, isTaken);
                EXPECT_THAT(readBack(url), testing::Each(readBack(url)[0])) << escaped(text);
                refused += !isTaken && byte > ' ' && text == c ? c : "";
            }
        }
        EXPECT_EQ(refused, expected);
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
