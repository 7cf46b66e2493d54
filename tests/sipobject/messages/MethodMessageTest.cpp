#include "sipobject/messages/KxSipInfoMessage.h"
#include "sipobject/messages/KxSipMessageMessage.h"
#include "sipobject/messages/KxSipNotifyMessage.h"
#include "sipobject/messages/KxSipOptionsMessage.h"
#include "sipobject/messages/KxSipReferMessage.h"
#include "sipobject/messages/KxSipRegisterMessage.h"
#include "sipobject/messages/KxSipSubscribeMessage.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

/** The parts of a golden file: the title of each after "## ", and the text up to the next. */
static std::vector<std::pair<std::string, std::string>> blocksOf(const std::filesystem::path& path) {
    std::vector<std::pair<std::string, std::string>> blocks;
    std::istringstream file(fileText(path));
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("## ")) {
            blocks.emplace_back(line.substr(3), "");
        } else {
            blocks.back().second += line + '\n';
        }
    }
    return blocks;
}

/** A message with status 1, whose headers are therefore not checked. */
static KxHandle<KxSipMessage> unchecked(const std::string& startLine, const std::string& headers) {
    const KxHandle<KxSipMessage> message = readMessage(startLine + "\r\nno colon\r\n" + headers + "\r\n");
    EXPECT_EQ(message->getStatus(), KX_STATUS_INCOMPLETE);
    return message;
}

/** The headers of an INVITE or of a response to one, without those whose names are given. */
static std::string headersWithout(const std::string& names) {
    std::istringstream all(requiredHeaders("INVITE") + "Contact: <sip:b@192.0.2.2>\r\n");
    std::string lines;
    for (std::string line; std::getline(all, line);) {
        lines += names.find(line.substr(0, line.find(':'))) == std::string::npos ? line + '\n' : "";
    }
    return lines;
}

TEST(DerivedMessageTest, IsWrittenAsTheGoldenTextsSay) {
    std::size_t derived = 0;
    for (const std::filesystem::path& path : filesOf("tests/messages/derived", ".sip")) {
        const auto blocks = blocksOf(path);
        const KxHandle<KxSipMessage> parent = readMessage(blocks[0].second);
        const std::string before = written(*parent);
        for (std::size_t i = 1; i < blocks.size(); ++i, ++derived) {
            const auto& [how, expected] = blocks[i];
            const std::string text = derivedText(parent, how);
            EXPECT_EQ(text.starts_with("Kx") ? text + '\n' : text, expected) << path << ", " << how;
        }
        EXPECT_EQ(written(*parent), before) << path << ": the parent was changed";
    }
    EXPECT_GE(derived, 50U);
}

TEST(DerivedMessageTest, AwkwardParentsAreRefusedWhole) {
    const std::string telParties = "From: <tel:+1>;tag=1\r\nTo: <tel:+2>\r\n";
    const std::string wildcard = headersWithout("Contact") + "Contact: *\r\n";
    // headers; what can be derived from a 200 with these headers; and from an INVITE
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"", "", ""},
        {headersWithout("CSeq"), "", ""},
        {headersWithout("From"), "", ""},
        {headersWithout("To"), "", ""},
        {headersWithout("Call-ID"), "", ""},
        {headersWithout("Via"), "ack bye prack", "bye"},
        {wildcard, "", "bye cancel"},
        {headersWithout("Contact") + "Contact: <tel:+1>\r\n", "", "bye cancel"},
        {headersWithout("FromToContact") + telParties, "", "cancel"},
        {headersWithout("FromTo") + telParties, "ack bye prack", "cancel"},
    };
    const auto expectMade = [](const std::string& startLine, const std::string& headers, const std::string& made,
                               std::initializer_list<const char*> all) {
        SCOPED_TRACE(startLine + "\n" + headers);
        const Balance balance;
        const KxHandle<KxSipMessage> parent = unchecked(startLine, headers);
        for (const char* how : all) {
            const std::string text = derivedText(parent, how);
            if (made.find(how) == std::string::npos) {
                EXPECT_TRUE(text.starts_with("KxSipParseError: ")) << how << " gave " << text;
                EXPECT_GT(text.size(), sizeof("KxSipParseError: ") + 8) << how << " gave " << text;
            } else {
                EXPECT_TRUE(text.ends_with("Content-Length: 0\r\n\r\n")) << how << " gave " << text;
            }
        }
    };
    for (const auto& [headers, ofResponse, ofInvite] : rows) {
        expectMade("SIP/2.0 200 OK", headers, ofResponse, {"ack", "bye", "prack"});
        expectMade("INVITE sip:b@example.com SIP/2.0", headers, ofInvite, {"bye", "cancel"});
    }
    expectMade("SIP/2.0 180 Ringing", wildcard, "ack prack", {"ack", "bye", "prack"}); // the Contact is not used
    expectMade("INVITE tel:+1 SIP/2.0", wildcard, "bye cancel", {"bye", "cancel"});
}

TEST(DerivedMessageTest, TakesTheFirstOfSeveralValues) {
    const std::string headers = "Via: SIP/2.0/UDP 192.0.2.1\r\nFrom: <sip:a@h>, <sip:a2@h>\r\nTo: <sip:b@h>\r\n"
                                "To: <sip:b2@h>\r\nCall-ID: c\r\nCall-ID: c2\r\nCSeq: 1 INVITE\r\nCSeq: 2 INVITE\r\n";
    EXPECT_EQ(derivedText(unchecked("SIP/2.0 486 Busy", headers), "ack"),
              "ACK sip:b@h SIP/2.0\r\nFrom: <sip:a@h>\r\nTo: <sip:b@h>\r\nCall-ID: c\r\nCSeq: 1 ACK\r\n"
              "Content-Length: 0\r\n\r\n");
}

TEST(DerivedMessageTest, NilParentsAreRefused) {
    const Balance balance;
    for (const char* how : {"response 200", "ack", "bye", "cancel", "prack"}) {
        EXPECT_EQ(derivedText({}, how).find("KxSipParseError: "), 0U) << how;
    }
    EXPECT_THROW(KxMake<KxSipByeMessage>(KxHandle<KxSipInviteMessage>()), KxHandle<KxSipParseError>);
}

TEST(DerivedMessageTest, ResponsesAndAcksGoBackOverTheConnectionOfTcpAndTls) {
    const KxHandle<KxSipMessage> invite = readMessage("INVITE sip:b SIP/2.0\r\n" + headersWithout("") + "\r\n");
    const KxHandle<KxSipMessage> ok = readMessage("SIP/2.0 200 OK\r\n" + headersWithout("") + "\r\n");
    const KxInetAddress address = addressOf("192.0.2.77");
    for (int transport = 0; transport <= KxSocketImpl::WSS; ++transport) {
        for (const std::string how : {"response 200", "cancel", "ack", "bye", "prack"}) {
            SCOPED_TRACE(how + " over transport " + std::to_string(transport));
            const KxHandle<KxSipMessage>& parent = how[0] == 'r' || how == "cancel" ? invite : ok;
            parent->setConnectionAddress(address);
            parent->setConnectionPort(5099);
            parent->setConnectionTransport(static_cast<KxSocketImpl::Transport>(transport));
            const bool kept = (how[0] == 'r' || how == "ack") && (transport == 1 || transport == 2);
            const KxHandle<KxSipMessage> made = derive(parent, how);
            EXPECT_EQ(made->getConnectionAddress(), kept ? address : KxInetAddress());
            EXPECT_EQ(made->getConnectionPort(), kept ? 5099U : 0U);
            EXPECT_EQ(made->getConnectionTransport(), kept ? transport : 0);
        }
    }
}

TEST(MethodClassTest, OtherTokensMakeResponsesAndUnknownRequests) {
    for (const std::string method : {"SIP", "UPDATE", "invite", "INVITES"}) {
        const KxHandle<KxSipMessage> message =
            readMessage((method == "SIP" ? "SIP/2.0 200 OK" : method + " sip:b@h SIP/2.0") + "\r\n" +
                        requiredHeaders(method) + "\r\n");
        for (const KxHandle<KxSipMessage>& each : {message, copyOf(*message)}) {
            EXPECT_EQ(className(*each), method == "SIP" ? "KxSipResponse" : "KxSipUnknownRequest");
        }
    }
}

template <class M>
struct BuiltMessageTest : testing::Test {};

using BuiltClasses =
    testing::Types<KxSipInviteMessage, KxSipAckMessage, KxSipByeMessage, KxSipCancelMessage, KxSipPrackMessage,
                   KxSipInfoMessage, KxSipMessageMessage, KxSipNotifyMessage, KxSipOptionsMessage, KxSipReferMessage,
                   KxSipRegisterMessage, KxSipSubscribeMessage>;
TYPED_TEST_SUITE(BuiltMessageTest, BuiltClasses);

TYPED_TEST(BuiltMessageTest, EveryFormGivesTheMethodItsHeadersInOrder) {
    const std::string method(KxString(TypeParam::sMethodName).view());
    const std::string headers = " SIP/2.0\r\nFrom: <sip:a@h>;tag=1\r\nTo: B <sip:b@h>\r\nContact: <sip:a@c>\r\n"
                                "Call-ID: x\r\nCSeq: 9 " +
                                method + "\r\nContent-Length: 2\r\nContent-Type: t/p\r\n\r\nhi";
    const auto expect = [&](KxSipRequest* built, const std::string& target) {
        const KxHandle<KxSipRequest> message(built);
        EXPECT_EQ(written(*message), method + target + headers);
        EXPECT_TRUE(message->isValid());
        message->insertViaHeader("h", 5060, "UDP");
        for (const KxHandle<KxSipMessage>& each : {copyOf(*message), readMessage(written(*message))}) {
            EXPECT_EQ(written(*each), written(*message));
            EXPECT_EQ(className(*each), className(*message));
        }
    };
    const auto copied = []<class H>(const KxHandle<H>& header) { return KxMake<H>(*header); };
    const auto from = KxMake<KxSipFromHeader>("<sip:a@h>;tag=1");
    const auto to = KxMake<KxSipToHeader>("B <sip:b@h>");
    const auto contact = KxMake<KxSipContactHeader>("<sip:a@c>");
    const auto target = KxMake<KxSipNameAddress>("X <sip:target;lr>");
    expect(new TypeParam("<sip:a@h>;tag=1", "B <sip:b@h>", "<sip:a@c>", "x", 9, "t/p", "hi", 2), " sip:b@h");
    expect(new TypeParam(from, to, contact, "x", 9, "t/p", "hi", 2), " sip:b@h");
    expect(new TypeParam(target, copied(from), copied(to), copied(contact), "x", 9, "t/p", "hi", 2), " sip:target;lr");
}

TEST(InviteMessageTest, CopiesKeepPreferredAddressAndOutboundProxyFlag) {
    const auto invite = KxMake<KxSipInviteMessage>("<sip:a@h>", "<sip:b@h>", nullptr, "x", 1U, nullptr, nullptr, 0U);
    const auto settings = [](const KxSipRequest& r) {
        return joined(r.useLocalOutboundProxy(), r.getPreferredIpAddrStr());
    };
    EXPECT_EQ(settings(*invite), "0|");
    invite->setUseLocalOutboundProxy(true);
    invite->setPreferredIpAddr("192.0.2.9");
    const KxHandle<KxSipRequest> copy(invite->clone());
    invite->setPreferredIpAddr("192.0.2.10");
    EXPECT_EQ(settings(*invite) + ' ' + settings(*copy), "1|192.0.2.10 1|192.0.2.9");
}
