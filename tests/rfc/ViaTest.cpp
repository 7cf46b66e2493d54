#include "sipobject/messages/KxSipDialog.h"
#include "sipobject/messages/KxSipDialogParts.h"
#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipRequestParts.h"
#include "sipobject/messages/KxSipResponse.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "tests/sipobject/support/HeaderSupport.h"

static std::string partsOf(const KxSipViaHeader& via) {
    return joined(via.getTransport(), via.getTransportParam(), via.getHost(), via.isPortPresent(), via.getPort(),
                  via.getParameters()->getString());
}

TEST(ViaTest, Reads) {
    constexpr const char* kInvalid = "KxSipParseError: Invalid Via header";
    expectRows<KxSipViaHeader, &partsOf>({
        // RFC 5118 4.1, 4.5, 4.7, 4.9
        {"Via: SIP/2.0/UDP [2001:db8::9:1];branch=z9hG4bKas3-111", "UDP|0|2001:db8::9:1|0|5060|branch=z9hG4bKas3-111"},
        {"Via: SIP/2.0/UDP [2001:db8::9:1];received=[2001:db8::9:255]",
         "UDP|0|2001:db8::9:1|0|5060|received=[2001:db8::9:255]"},
        {"Via: SIP/2.0/UDP [2001:db8::9:1];received=2001:db8::9:255;rport=5;maddr=[::1]",
         "UDP|0|2001:db8::9:1|0|5060|received=2001:db8::9:255;rport=5;maddr=[::1]"},
        {"Via: SIP/2.0/UDP [2001:db8::9:1]:6050, SIP/2.0/TCP 192.0.2.1:5060",
         "UDP|0|2001:db8::9:1|1|6050| & TCP|1|192.0.2.1|1|5060|",
         "Via: SIP/2.0/UDP [2001:db8::9:1]:6050 & Via: SIP/2.0/TCP 192.0.2.1:5060"},
        {"Via: SIP/2.0/UDP  [::ffff:192.0.2.10] : 19823 ;rport", "UDP|0|::ffff:192.0.2.10|1|19823|rport",
         "Via: SIP/2.0/UDP [::ffff:192.0.2.10]:19823;rport"},
        // RFC 4475 3.1.1.10: transports
        {"Via: SIP/2.0/unknown t5.example.com", "UNKNOWN|0|t5.example.com|0|5060|",
         "Via: SIP/2.0/UNKNOWN t5.example.com"},
        {"Via: SIP/2.0/TLS h, SIP/2.0/TLS-SCTP h", "TLS|2|h|0|5061| & TLS-SCTP|0|h|0|5061|",
         "Via: SIP/2.0/TLS h & Via: SIP/2.0/TLS-SCTP h"},
        {"Via: SIP/2.0/UDP h;x=\"1, 2\";y, SIP/2.0/UDP g", "UDP|0|h|0|5060|x=\"1, 2\";y & UDP|0|g|0|5060|",
         "Via: SIP/2.0/UDP h;x=\"1, 2\";y & Via: SIP/2.0/UDP g"},
        {"Via: SIP/2.0/UDP h (,);x", "UDP|0|h|0|5060|x"}, // a comment of RFC 2543
        {"Via: SIP/2.0/UDP h:65535", "UDP|0|h|1|65535|"},
        {"Via: SIP/2.0/UDP h:65536", "", kInvalid},
        {"Via: SIP/2.0/UDP h:", "", kInvalid},
        {"Via: SIP/2.0/UDP h:5x", "", kInvalid},
        {"Via: SIP/2.0/UDP h:5:6", "", kInvalid},
        {"Via: SIP/2.0/UDP h g", "", kInvalid},
        {"Via: SIP/2.0/UDP 2001:db8::1", "", kInvalid},
        {"Via: SIP/2.0/UDP [::1", "", kInvalid},
        {"Via: SIP/2.0/UDP [::1]x", "", kInvalid},
        {"Via: SIP/2.0/UDP [h]", "", kInvalid},
        {"Via: SIP/2.0/ h", "", kInvalid},
    });
}

TEST(ViaTest, ComparesByMeaning) {
    const auto via = [](const std::string& text) { return readAs<KxSipViaHeader>("Via: SIP/2.0/" + text); };
    EXPECT_TRUE(via("TLS [2001:db8::1]")->compare(via("tls [2001:DB8:0::1]:5061")));
    EXPECT_TRUE(via("UDP h")->compare(via("UDP H:5060")));
    EXPECT_FALSE(via("TLS h")->compare(via("TLS h:5060")));
    EXPECT_FALSE(via("A h")->compare(via("B h")));
    const auto received = via("UDP [2001:db8:0::1]");
    received->setSource("2001:db8::1", 5);
    EXPECT_EQ(received->getReceived(), KxString());
    received->setSource("2001:db8::2", 5);
    EXPECT_EQ(received->getReceived(), "2001:db8::2");
}

TEST(ViaTest, DialogsWorkOverIPv6) {
    const auto invite =
        KxSipInviteMessage::sBuild({.requestUri = "sips:b@[2001:db8::2]",
                                    .from = "<sips:a@h>;tag=1",
                                    .to = "<sips:b@h>",
                                    .contact = "<sips:a@[2001:db8::1]>",
                                    .callId = "c",
                                    .cseq = 1,
                                    .via = {.host = "2001:db8::1", .transport = "tls", .branch = "z9hG4bK1"}});
    const std::string text = written(*invite);
    EXPECT_THAT(text,
                testing::HasSubstr("INVITE sips:b@[2001:db8::2] SIP/2.0\r\nVia: SIP/2.0/TLS [2001:db8::1]:5060;"));
    const auto request = KxHandleCast<KxSipRequest>(readMessage(text));
    EXPECT_EQ(written(*request), text);
    EXPECT_EQ(request->createKey(), KxString("bh5061ah50611[2001:db8::1]5060z9hG4bK1c1"));
    const auto response =
        KxSipResponse::sBuild(*request, {.statusCode = 200, .toTag = "2", .contact = "<sips:b@[2001:db8::3]:5071>"});
    KxSipDialog dialog = KxSipDialog::sOfCaller(*request, *response);
    const auto bye = KxSipRequest::sWithin(dialog, "BYE", {.via = {.host = "[::1]", .port = 5061, .transport = "FOO"}});
    EXPECT_EQ(startLineOf(*bye), "BYE sips:b@[2001:db8::3]:5071 SIP/2.0");
    EXPECT_THAT(written(*bye), testing::HasSubstr("\r\nVia: SIP/2.0/FOO [::1]:5061;"));
    EXPECT_EQ(outcomeOf([&] { return written(*KxSipRequest::sWithin(dialog, "BYE", {.via = {.host = "[::1"}})); }),
              "KxSipParseError: Not a token: Via host");
}
