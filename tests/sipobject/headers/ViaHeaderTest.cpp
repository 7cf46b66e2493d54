#include "tests/sipobject/support/HeaderSupport.h"

/** Name|version|transport|host|port or "-"|comment|parameters. */
static std::string fieldsOf(const KxSipViaHeader& via) {
    EXPECT_TRUE(via.isPortPresent() || via.getPort() == 5060);
    return joined(via.getProtocolName(), via.getProtocolVersion(), via.getTransport(), via.getHost(),
                  via.isPortPresent() ? std::to_string(via.getPort()) : "-", via.getComment(),
                  via.getParameters()->getString());
}

static KxHandle<KxSipViaHeader> viaOf(const std::string& value) {
    return readAs<KxSipViaHeader>("Via: " + value);
}

TEST(ViaHeaderTest, Reads) {
    constexpr const char* kInvalid = "KxSipParseError: Invalid Via header";
    constexpr const char* kTransport = "KxSipParseError: Invalid Via header transport";
    constexpr const char* kNoTransport = "KxSipParseError: Invalid Via header, no transport";
    expectRows<KxSipViaHeader, &fieldsOf>({
        {"Via: SIP / 2.0 / tcp  host:5070 ;branch=z9hG4bKabc;rport", "SIP|2.0|TCP|host|5070||branch=z9hG4bKabc;rport",
         "Via: SIP/2.0/TCP host:5070;branch=z9hG4bKabc;rport"},
        {"Via:XYZ/9/wss\thost", "XYZ|9|WSS|host|-||", "Via: XYZ/9/WSS host"},
        {"Via: a,b;c/(d)\"/TLS h", "a,b;c|(d)\"|TLS|h|-||"},
        {"Via: SIP/2.0/UDP h : 5070 :5071x", "SIP|2.0|UDP|h|5071||", "Via: SIP/2.0/UDP h:5071"},
        {"Via: SIP/2.0/UDP h:", "SIP|2.0|UDP|h|0||", "Via: SIP/2.0/UDP h:0"},
        // comments are written after the parameters, where they are read as part of the last one
        {"Via: SIP/2.0/udp h (a;  b);x", "SIP|2.0|UDP|h|-|a;  b|x", "Via: SIP/2.0/UDP h;x (a;  b)",
         "Via: SIP/2.0/UDP h;x (a;b)"},
        {"Via: SIP/2.0/UDP h(a)( b,\";)(:)5:6", "SIP|2.0|UDP|h|-|:|", "Via: SIP/2.0/UDP h (:)"},
        {"Via: SIP/2.0/UDP h (open", "SIP|2.0|UDP|h|-|open|", "Via: SIP/2.0/UDP h (open)"},
        {"Via: SIP/2.0/UDP h;ttl=255;X=\"a;b\";;x=2; hidden ;maddr = 1.2.3.4",
         "SIP|2.0|UDP|h|-||ttl=255;X=2;hidden;maddr=1.2.3.4", "Via: SIP/2.0/UDP h;ttl=255;X=2;hidden;maddr=1.2.3.4"},
        {"Via: SIP/2.0/UDP h;x=\"1, SIP/2.0/UDP g;y=\"", "SIP|2.0|UDP|h|-||x=\"1 & SIP|2.0|UDP|g|-||y=\"",
         "Via: SIP/2.0/UDP h;x=\"1 & Via: SIP/2.0/UDP g;y=\""},
        {"Via: SIP/2.0/UDP h;ttl=abc", "SIP|2.0|UDP|h|-||ttl=abc"},
        // the checks come in this order
        {"Via: SIP/2.0/ ,x", "", kNoTransport},
        {"Via: //;ttl=256", "", kNoTransport},
        {"Via: SIP/2.0/ host", "", kTransport}, // the host is taken for the transport
        {"Via: //FOO", "", kTransport},
        {"Via: SIP/2.0/UDP ;ttl=256", "", kInvalid},
        {"Via: SIP//UDP h", "", kInvalid},
    });
}

TEST(ViaHeaderTest, ManyCommentsCostTheirLength) {
    EXPECT_TRUE(viaOf(repeated("SIP/2.0/UDP h(,)(;)(,", 100000) + ")")->getNext().isNil());
}

TEST(ViaHeaderTest, TheConstructorChecksAsReadingDoes) {
    const auto make = [](const char* host, const char* transport) {
        return outcomeOf([&] { return linesOf(*KxMake<KxSipViaHeader>(host, 0U, transport)); });
    };
    EXPECT_EQ(make("h", "tls"), "Via: SIP/2.0/TLS h:0");
    EXPECT_EQ(make("h", "foo"), "KxSipParseError: Invalid Via header transport");
    EXPECT_EQ(make("h", ""), "KxSipParseError: Invalid Via header, no transport");
    EXPECT_EQ(make("", "udp"), "KxSipParseError: Invalid Via header");
}

TEST(ViaHeaderTest, ParametersByTheirNames) {
    const KxHandle<KxSipViaHeader> via = viaOf("SIP/2.0/UDP h;Branch=b;RPORT;received=r;x");
    EXPECT_EQ(joined(via->getBranch(), via->getReceived(), via->getMaddr(), via->getParameter("X")), "b|r||");
    EXPECT_EQ(joined(via->isRPortPresent(), via->isHiddenPresent(), via->getTTL()), "1|0|1");
    via->setHidden();
    via->setTTL(KxString("-1"));
    EXPECT_EQ(via->getTTL(), 0xFFFFFFFFU);
    const auto copy = KxMake<KxSipViaHeader>(*via);
    via->setBranch(KxString("c"));
    via->removeReceived();
    via->setMaddr(KxString("m"));
    via->setTransport("sctp");
    EXPECT_EQ(linesOf(*via), "Via: SIP/2.0/SCTP h;Branch=c;RPORT;x;hidden;ttl=-1;maddr=m");
    EXPECT_EQ(via->getTransportParam(), KxSocketImpl::SCTP);
    for (const char* name : {"hidden", "ttl", "maddr", "branch"}) {
        via->getParameters()->removeValue(name);
    }
    EXPECT_EQ(linesOf(*via), "Via: SIP/2.0/SCTP h;RPORT;x");
    EXPECT_EQ(linesOf(*copy), "Via: SIP/2.0/UDP h;Branch=b;RPORT;received=r;x;hidden;ttl=-1");
    copy->setBranchRFC3261();
    EXPECT_EQ(copy->getBranch().length(), 43U);
    EXPECT_EQ(linesOf(*copy).find("Via: SIP/2.0/UDP h;Branch=z9hG4bK"), 0U);
}

TEST(ViaHeaderTest, ComparesSentProtocolAndSentBy) {
    const KxHandle<KxSipViaHeader> via = viaOf("SIP/2.0/UDP host");
    EXPECT_FALSE(via->compare({}));
    EXPECT_TRUE(via->compare(viaOf("SIP/2.0/udp host:5060 (c);branch=1")));
    for (const char* other :
         {"SIP/2.0/TCP host", "SIP/2.0/UDP Host", "SIP/2.0/UDP host:5061", "SIP/2/UDP host", "sip/2.0/UDP host"}) {
        EXPECT_FALSE(via->compare(viaOf(other))) << other;
    }
}
