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

#include <sstream>

namespace {

/** A part of a golden file: "## title", and the text up to the next title. */
struct Block {
    std::string title;
    std::string text;
};

std::vector<Block> blocksOf(const std::filesystem::path& path) {
    std::vector<Block> blocks;
    std::istringstream file(fileText(path));
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("## ")) {
            blocks.push_back({line.substr(3), ""});
        } else {
            blocks.back().text += line + '\n';
        }
    }
    return blocks;
}

/** A message with status 1, whose headers are therefore not checked. */
KxHandle<KxSipMessage> unchecked(const std::string& startLine, const std::string& headers) {
    const KxHandle<KxSipMessage> message = readMessage(startLine + "\r\nno colon\r\n" + headers + "\r\n");
    EXPECT_EQ(message->getStatus(), KX_STATUS_INCOMPLETE);
    return message;
}

/** The headers of an INVITE or of a response to one, without those whose names are given. */
std::string headersWithout(const std::string& names) {
    std::string lines;
    for (const char* line :
         {"Via: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bK1", "From: <sip:a@example.com>;tag=1", "To: <sip:b@example.com>",
          "Call-ID: c@192.0.2.1", "CSeq: 1 INVITE", "Contact: <sip:b@192.0.2.2>"}) {
        const std::string_view name(line, std::string_view(line).find(':'));
        if (names.find(name) == std::string::npos) {
            lines += std::string(line) + "\r\n";
        }
    }
    return lines;
}

} // namespace

TEST(DerivedMessageTest, IsWrittenAsTheGoldenTextsSay) {
    std::size_t derived = 0;
    for (const std::filesystem::path& path : filesOf("tests/messages/derived", ".sip")) {
        const std::vector<Block> blocks = blocksOf(path);
        ASSERT_GE(blocks.size(), 2U) << path;
        const KxHandle<KxSipMessage> parent = readMessage(blocks[0].text);
        const std::string before = written(*parent);
        for (std::size_t i = 1; i < blocks.size(); ++i, ++derived) {
            SCOPED_TRACE(path.filename().string() + ", " + blocks[i].title);
            std::string text = derivedText(parent, blocks[i].title);
            EXPECT_EQ(text.starts_with("Kx") ? text + '\n' : text, blocks[i].text);
        }
        EXPECT_EQ(written(*parent), before) << path << ": the parent was changed";
    }
    EXPECT_GE(derived, 50U);
}

TEST(DerivedMessageTest, OutlivesItsParent) {
    const Balance balance;
    KxHandle<KxSipMessage> response = readMessage("SIP/2.0 200 OK\r\n" + headersWithout("") + "\r\n");
    const KxHandle<KxSipMessage> bye = derive(response, "bye");
    const std::string text = written(*bye);
    response->getFromHeader()->setTag("another");
    response = nullptr;
    EXPECT_EQ(written(*bye), text);
}

TEST(DerivedMessageTest, AwkwardParentsAreRefusedWhole) {
    const std::string telParties = "From: <tel:+1>;tag=1\r\nTo: <tel:+2>\r\n";
    struct Row {
        const char* name;
        std::string headers;
        std::string ofResponse; ///< What can be derived from a 200 with these headers.
        std::string ofInvite;   ///< What can be derived from an INVITE.
    };
    const Row rows[] = {
        {"nothing at all", "", "", ""},
        {"no CSeq", headersWithout("CSeq"), "", ""},
        {"no From", headersWithout("From"), "", ""},
        {"no To", headersWithout("To"), "", ""},
        {"no Call-ID", headersWithout("Call-ID"), "", ""},
        {"no Via", headersWithout("Via"), "ack bye prack", "bye"},
        {"wildcard Contact", headersWithout("Contact") + "Contact: *\r\n", "", "bye cancel"},
        {"tel Contact", headersWithout("Contact") + "Contact: <tel:+1>\r\n", "", "bye cancel"},
        {"tel parties", headersWithout("FromToContact") + telParties, "", "cancel"},
        {"tel parties, sip Contact", headersWithout("FromTo") + telParties, "ack bye prack", "cancel"},
    };
    const auto expectMade = [](const std::string& startLine, const Row& row, const std::string& made,
                               std::initializer_list<const char*> all) {
        SCOPED_TRACE(startLine + ": " + row.name);
        const Balance balance;
        const KxHandle<KxSipMessage> parent = unchecked(startLine, row.headers);
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
    for (const Row& row : rows) {
        expectMade("SIP/2.0 200 OK", row, row.ofResponse, {"ack", "bye", "prack"});
        expectMade("INVITE sip:b@example.com SIP/2.0", row, row.ofInvite, {"bye", "cancel"});
    }
    const Row unasked = {"a Contact that is not used", headersWithout("Contact") + "Contact: *\r\n", {}, {}};
    expectMade("SIP/2.0 180 Ringing", unasked, "ack prack", {"ack", "bye", "prack"});
    expectMade("INVITE tel:+1 SIP/2.0", unasked, "bye cancel", {"bye", "cancel"});
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
    KxInetAddress address;
    ASSERT_TRUE(address.initFromAddress("192.0.2.77"));
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

// ---- the classes ----

TEST(MethodClassTest, OtherTokensMakeResponsesAndUnknownRequests) {
    const std::string request = " sip:b@h SIP/2.0\r\n";
    const std::pair<std::string, const char*> rows[] = {
        {"SIP/2.0 200 OK\r\n" + requiredHeaders("SIP"), "KxSipResponse"},
        {"UPDATE" + request + requiredHeaders("UPDATE"), "KxSipUnknownRequest"},
        {"invite" + request + requiredHeaders("invite"), "KxSipUnknownRequest"},
        {"INVITES" + request + requiredHeaders("INVITES"), "KxSipUnknownRequest"},
    };
    for (const auto& [head, expected] : rows) {
        const std::string text = head + "Content-Type: a/b\r\nContent-Length: 1\r\n\r\nx";
        const KxHandle<KxSipMessage> message = readMessage(text);
        for (const KxHandle<KxSipMessage>& each : {message, copyOf(*message)}) {
            EXPECT_EQ(className(*each), expected);
            EXPECT_EQ(written(*each), text);
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
    const KxSipRequest& request = *invite;
    EXPECT_EQ(joined(request.useLocalOutboundProxy(), request.getPreferredIpAddrStr()), "0|");
    invite->setUseLocalOutboundProxy(true);
    invite->setPreferredIpAddr("192.0.2.9");
    const KxHandle<KxSipRequest> copy(invite->clone());
    invite->setPreferredIpAddr("192.0.2.10");
    EXPECT_EQ(joined(request.useLocalOutboundProxy(), request.getPreferredIpAddrStr()), "1|192.0.2.10");
    EXPECT_EQ(joined(copy->useLocalOutboundProxy(), copy->getPreferredIpAddrStr()), "1|192.0.2.9");
}
