#include "tests/sipobject/support/HeaderSupport.h"

#include "sipobject/headers/KxSipNumberHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

using testing::ElementsAre;

namespace {

/** Header classes of the host's own, which get their identifiers at start-up. */
class Account final : public KxSipTokenHeader<Account> {
public:
    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "Account";
    inline static const HeaderID kHeaderID = KxSipHeader::sNewHeaderID();
    static constexpr const KxCharSet& kTokenEnd = kOptionTagEnd;
    static constexpr const char* kEmptyError = nullptr;
};
class Level final : public KxSipNumberHeader<Level> {
public:
    static const KxConstString sToken;
    static constexpr char kClassName[] = "Level";
    inline static const HeaderID kHeaderID = KxSipHeader::sNewHeaderID();
};

constinit const KxConstString Account::sToken{"X-Kx-Account"};
constinit const KxConstString Account::sCompactToken{"X-Kx-A"};
constinit const KxConstString Level::sToken{"X-Kx-Level"};
const Account::Registration s_account;
const Level::Registration s_level;

} // namespace

/** A message with the headers of the lines, added one by one at the end. */
static KxHandle<OpenRequest> messageOf(std::initializer_list<const char*> lines) {
    auto message = KxMake<OpenRequest>("TEST");
    for (const char* line : lines) {
        message->addHeader(readHeader(line), false);
    }
    return message;
}

/** The header lines as written, "|" after each. */
static std::string linesOf(const KxSipMessage& message) {
    std::string text = written(message);
    text.resize(text.find("\r\n\r\n") + 2);
    text.erase(0, text.find("\r\n") + 2);
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at)) {
        text.replace(at, 2, "|");
    }
    return text;
}

TEST(MessageContainerTest, TakesAllValuesByKindAndNothingOfNil) {
    const auto message = messageOf({"Supported: a", "X-A: 1"});
    message->addHeaderByID(readHeader("Supported: b, c"));
    message->addHeader({}, true);
    message->addSingleHeader({}, false);
    EXPECT_EQ(linesOf(*message), "Supported: a|Supported: b|Supported: c|X-A: 1|");
    EXPECT_EQ(written(OpenRequest("TEST")), "TEST : SIP/2.0\r\n\r\n");
}

TEST(MessageContainerTest, ValuesOfAClass) {
    const auto message = messageOf({"m: <sip:a>", "Via: SIP/2.0/UDP h", "Contact: *, <tel:1>", "l: 3"});
    const KxSipMessage& same = *message;
    std::string seen;
    for (const KxSipContactHeader& contact : same.values<KxSipContactHeader>()) {
        seen += std::string(contact.getToken().view()) + (contact.isWildCard() ? " *|" : " |");
    }
    EXPECT_EQ(seen, "m |Contact *|Contact |");
    for (KxSipContactHeader& contact : message->values<KxSipContactHeader>()) {
        contact.setParameter("q", KxString("1"));
    }
    EXPECT_EQ(message->first<KxSipContactHeader>(), message->getContactHeader().get());
    EXPECT_EQ(same.first<KxSipRouteHeader>(), nullptr);
    EXPECT_FALSE(same.has<KxSipRouteHeader>());
    EXPECT_EQ(message->removeFirst<KxSipContactHeader>(), 1U);
    EXPECT_EQ(message->removeAll<KxSipRouteHeader>(), 0U);
    const KxHandle<KxSipViaHeader> via = message->getViaHeader();
    message->replace(readAs<KxSipViaHeader>("v: SIP/2.0/TCP i"));
    message->replace(KxHandle<KxSipRouteHeader>());
    message->replace(readAs<KxSipSubjectHeader>("Subject: s"));
    message->addHeader(via, false); // it is part of no message any more
    EXPECT_EQ(linesOf(*message),
              "Contact: *;q=1|Contact: <tel:1>;q=1|v: SIP/2.0/TCP i|Via: SIP/2.0/UDP h|l: 3|Subject: s|");
    EXPECT_EQ(message->getHeaderByID(KxHeaderIDs::kVia)->getNext(), via);
    EXPECT_EQ(message->removeAll<KxSipContactHeader>(), 2U);
    EXPECT_EQ(message->removeAll<KxSipViaHeader>(), 2U);
    message->replace(message->getContentLengthHeader()); // a copy of what it holds
    EXPECT_EQ(linesOf(*message), "l: 3|Subject: s|");
    const auto read = readMessage("OPTIONS sip:h SIP/2.0\r\n" + requiredHeaders("OPTIONS") + "Supported: a\r\n\r\n");
    read->replace(KxMake<KxSipSupportedHeader>("b")); // of what was read last
    read->addHeader(KxMake<KxSipSupportedHeader>("c"), false);
    EXPECT_EQ(linesOf(*read->getHeader("Supported")), "Supported: b & Supported: c");
}

TEST(MessageContainerTest, KindsOfTheHostsOwn) {
    EXPECT_EQ(sizeof(KxSipMessage), sizeof(void*) == 8 ? 472U : sizeof(KxSipMessage));
    const auto message = readMessage("OPTIONS sip:h SIP/2.0\r\nX-Kx-Level: 1\r\nx-kx-a: b, c\r\n" +
                                     requiredHeaders("OPTIONS") + "X-KX-LEVEL: 2\r\nSubject: s\r\n\r\n");
    for (const char* const name : {"From", "To", "Via", "CSeq", "Call-ID"}) {
        message->removeHeader(name);
    }
    const auto copy = copyOf(*message);
    message->replace(readAs<Account>("X-Kx-A: d, e"));
    message->addSingleHeader(readHeader("X-Kx-Account: f, g"), true);
    EXPECT_EQ(message->removeFirst<Level>(), 1U);
    EXPECT_EQ(linesOf(*message),
              "X-KX-LEVEL: 2|X-Kx-Account: f|X-Kx-A: d|X-Kx-Account: e|Subject: s|Content-Length: 0|");
    EXPECT_EQ(message->removeAll<Level>(), 1U);
    EXPECT_FALSE(message->has<Level>());
    const auto other = KxMake<KxSipUnknownHeader>("X-Kx-Other", "o");
    other->setHeaderID(Level::kHeaderID);
    message->addHeader(other, false);
    message->addHeader(readHeader("X-Kx-Level: 3"), false);
    EXPECT_EQ(message->mTokenToID("x-kx-other"), Level::kHeaderID);
    EXPECT_EQ(message->first<Level>(), other->getNext().get());
    EXPECT_THAT(message->getHeaderOrder(),
                ElementsAre(Account::kHeaderID, KxHeaderIDs::kSubject, KxHeaderIDs::kContentLength, Level::kHeaderID));
    EXPECT_EQ(linesOf(*copy), "X-Kx-Level: 1|X-KX-LEVEL: 2|x-kx-a: b|X-Kx-Account: c|Subject: s|Content-Length: 0|");
    for (int i = 0; i < 20; ++i) {
        copy->addHeader(readHeader("X-Kx-Level: 5"), false);
    }
    copy->replace(readAs<Level>("X-Kx-Level: 6")); // in place of a chain whose end is known
    copy->addHeader(readHeader("X-Kx-Level: 7"), false);
    EXPECT_EQ(linesOf(*copy), "X-Kx-Level: 6|X-Kx-Level: 7|x-kx-a: b|X-Kx-Account: c|Subject: s|Content-Length: 0|");
}

TEST(MessageContainerTest, AllHeadersOfAName) {
    static_assert(std::ranges::forward_range<KxSipNamedValues<const KxSipHeader>>);
    KxSipHeader::sAddConstructor("X-Kx-Tag", []() -> KxSipHeader* { return new KxSipRequireHeader(""); });
    const auto message = messageOf({"X-A: 1", "m: <sip:a>", "Contact: *", "x-a: 2", "Call-Info: <u:r>", "X-B: 3",
                                    "x-kx-tag: t, u", "Require: v", "X-Kx-A: w", "CALL-INFO: <u:s>"});
    message->addHeader(KxMake<KxSipCallInfoHeader>("<u:built>"), false); // a class that is not registered
    const auto other = KxMake<KxSipUnknownHeader>("X-Kx-Other", "o");
    other->setHeaderID(Account::kHeaderID);
    message->addHeader(other, true);
    for (const auto& [name, lines] : std::initializer_list<std::pair<const char*, std::string>>{
             {"CONTACT", "m: <sip:a>|Contact: *|"},
             {"M", "m: <sip:a>|Contact: *|"},
             {"x-A", "X-A: 1|x-a: 2|"},
             {"require", "x-kx-tag: t|Require: u|Require: v|"},
             {"X-KX-TAG", "x-kx-tag: t|Require: u|Require: v|"},
             {"x-kx-account", "X-Kx-A: w|"},
             {"x-kx-other", "X-Kx-Other: o|"},
             {"call-info", "Call-Info: <u:built>|Call-Info: <u:r>|CALL-INFO: <u:s>|"},
             {"Subject", ""},
             {"", ""},
         }) {
        const auto copy = copyOf(*message);
        std::string seen;
        for (const KxSipHeader& header : std::as_const(*copy).valuesNamed(name)) {
            seen.append(header.getToken().view()).append(": ").append(header.getValueText().view()) += '|';
        }
        EXPECT_EQ(seen, lines) << name;
        EXPECT_EQ(copy->hasNamed(name), !lines.empty()) << name;
        const KxSipHeader* const first = copy->firstNamed(name);
        const std::string_view spelled = first == nullptr ? name : first->getToken().view(); // is removed, too
        EXPECT_EQ(copy->removeAllNamed(spelled), std::count(lines.begin(), lines.end(), '|')) << name;
        EXPECT_EQ(linesOf(*copy).size() + lines.size(), linesOf(*message).size()) << name;
        EXPECT_TRUE(copy->valuesNamed(name).empty()) << name;
    }
}

TEST(MessageContainerTest, AddingTwiceIsNotedAndChangesNothing) {
    ClassLog capture("tandril.kx.KxSipMessage");
    const auto message = messageOf({"Require: a"});
    const KxHandle<KxSipHeader> last = readHeader("Require: b");
    message->addHeader(last, false);
    const KxHandle<KxSipHeader> first = message->getHeader("Require");
    for (const bool asFirst : {true, false}) {
        message->addHeader(first, asFirst);
        message->asynchAddHeader(first, asFirst);
        message->addSingleHeader(first, asFirst);
        EXPECT_THAT(capture.texts(), ElementsAre("KxSipMessage::addHeader : adding a header twice : Require",
                                                 "KxSipMessage::asynchAddHeader : adding a header twice : Require",
                                                 "KxSipMessage::addSingleHeader : adding a header twice : Require"));
        EXPECT_EQ(linesOf(*message), "Require: a|Require: b|");
    }
}

TEST(MessageContainerTest, FindsByKindOrByTheNameThatIsWritten) {
    const auto message = messageOf({"l: 5", "REQUIRE: a", "x: 90", "k: t"});
    EXPECT_TRUE(message->getHeader("Content-Length").isNil());
    ASSERT_FALSE(message->getHeader("L").isNil());
    EXPECT_EQ(lineOf(*message->getHeader("L")), "l: 5");
    EXPECT_EQ(lineOf(*message->getSupportedHeader()), "k: t");
    EXPECT_EQ(lineOf(*message->getSessionExpiresHeader()), "x: 90");
    EXPECT_EQ(joined(message->isRequired("a"), message->isRequired("A")), "1|0");
    EXPECT_FALSE(message->isSupported("t")); // it has the compact name
    EXPECT_TRUE(messageOf({"Supported: s, t"})->isSupported("t"));
    EXPECT_FALSE(message->removeHeader("Supported"));
}

TEST(MessageContainerTest, SetBody) {
    const auto message = messageOf({"Require: a"});
    const auto set = [&message](const void* body, const char* type, std::uint32_t length) {
        const std::string outcome = outcomeOf([&] { message->setBody(body, type, length); });
        const std::string text = written(*message);
        return outcome + '|' + linesOf(*message) + text.substr(text.find("\r\n\r\n") + 4);
    };
    EXPECT_EQ(set(nullptr, nullptr, 7), "KxSipParseError: Can't build SIP request with NULL body pointer|"
                                        "Require: a|Content-Length: 7|"); // the length is set already
    EXPECT_EQ(set("abcd", "text/plain", 3), "|Require: a|Content-Length: 3|Content-Type: text/plain|abc");
    EXPECT_EQ(message->getBody()[3], '\0');
    EXPECT_EQ(set("a\0c", "text/html;level=1", 3),
              std::string("|Require: a|Content-Length: 3|Content-Type: ") + std::string("text/html;level=1|a\0c", 21));
    EXPECT_EQ(set(nullptr, nullptr, 0).substr(0, 30), "|Require: a|Content-Length: 0|"); // the old body is kept,
    EXPECT_EQ(message->getStoredBodyLength(), 3U);                                       // but not written
    message->getContentLengthHeader()->setContentLength(100);
    EXPECT_EQ(written(*message).substr(written(*message).size() - 4), std::string("\na\0c", 4)); // not more than stored
    ASSERT_TRUE(message->removeHeader("Content-Length"));
    EXPECT_EQ(written(*message).substr(written(*message).size() - 4), "\r\n\r\n");
    message->setBody("to the NUL", "a/b");
    EXPECT_EQ(message->getBodyLength(), 10U);
}

TEST(MessageContainerTest, CopiesAreDeep) {
    const auto message = messageOf({"X-A: 1", "Require: a, b", "x-b: 2"});
    message->setBody("body", "text/plain");
    message->setConnectionAddress(addressOf("192.0.2.1"));
    message->setConnectionPort(5062);
    message->setLocalAddress(addressOf("192.0.2.2"));
    message->setLocalPort(5061);
    message->setConnectionTransport(KxSocketImpl::TLS);
    message->setStatus(KX_STATUS_INCOMPLETE);
    const std::string text = written(*message);
    const KxHandle<OpenRequest> copy(message->clone());
    EXPECT_EQ(copy->getStatus(), KX_STATUS_VALID);
    EXPECT_EQ(joined(copy->getConnectionAddress().getHostAddress(), copy->getConnectionPort(),
                     copy->getLocalAddress().getHostAddress(), copy->getLocalPort(), copy->getConnectionTransport()),
              joined("192.0.2.1", 5062, "192.0.2.2", 5061, KxSocketImpl::TLS));
    message->removeHeader("X-A");
    message->addHeader(readHeader("Require: c"), false);
    message->setBody("other", "a/b");
    EXPECT_EQ(written(*copy), text);
    EXPECT_NE(written(*message), text);
}
