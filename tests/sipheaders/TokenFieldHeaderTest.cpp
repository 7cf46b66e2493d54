#include "sipheaders/KxSipPAccessNetworkInfoHeader.h"
#include "sipheaders/KxSipPEarlyMediaHeader.h"
#include "sipheaders/KxSipSecurityClientHeader.h"
#include "sipheaders/KxSipSecurityServerHeader.h"
#include "sipheaders/KxSipSecurityVerifyHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

TEST(PEarlyMediaHeaderTest, Reads) {
    expectRows<KxSipPEarlyMediaHeader, &KxSipPEarlyMediaHeader::getEMParam, &KxSipPEarlyMediaHeader::isDirection,
               &KxSipPEarlyMediaHeader::isGated, &KxSipPEarlyMediaHeader::isSupported>({
        {"p-early-media: SendRecv, gated,supported ,x", "SendRecv|1|0|0 & gated|0|1|0 & supported|0|0|1 & x|0|0|0",
         "p-early-media: SendRecv & P-Early-Media: gated & P-Early-Media: supported & P-Early-Media: x"},
        {"P-Early-Media: sendonly;x", "", "KxSipParseError: SIP Header parse error : text after the value"},
        {"P-Early-Media: =", "", "KxSipParseError: Invalid P-Early-Media header"},
    });
    const auto built = KxMake<KxSipPEarlyMediaHeader>("supported");
    EXPECT_THROW(built->setEMParam(""), KxHandle<KxSipParseError>);
    built->setEMParam("inactive");
    EXPECT_TRUE(built->isDirection());
    EXPECT_EQ(linesOf(*built), "P-Early-Media: inactive");
}

TEST(PAccessNetworkInfoHeaderTest, Reads) {
    using H = KxSipPAccessNetworkInfoHeader;
    expectRows<H, &H::getAccessType, &H::getUTRANCellID, &H::getCGI, &H::getDSLLocation, &H::getWLANNodeID,
               &H::isNetworkProvided>({
        {"P-Access-Network-Info: 3GPP-E-UTRAN-FDD; utran-cell-id-3gpp=23415D0FCE11;NP, IEEE-802.11;i-wlan-node-id=0a",
         "3GPP-E-UTRAN-FDD|23415D0FCE11||||1 & IEEE-802.11||||0a|0",
         "P-Access-Network-Info: 3GPP-E-UTRAN-FDD; utran-cell-id-3gpp=23415D0FCE11;NP & P-Access-Network-Info: "
         "IEEE-802.11;i-wlan-node-id=0a"},
        {"P-Access-Network-Info: 3GPP-GERAN;network-provided;cgi-3gpp=\"2,3\";dsl-location=\"a;\\\"b\"",
         "3GPP-GERAN||2,3|a;\"b||1"},
        {"P-Access-Network-Info: \"x\"", "", "KxSipParseError: Invalid P-Access-Network-Info header"},
    });
    const auto built = KxMake<H>("ADSL");
    built->setNetworkProvided(true);
    built->setDSLLocation("port 5");
    built->setCGI("1");
    built->setUTRANCellID("2");
    built->setWLANNodeID("3");
    built->setAccessType("xDSL");
    EXPECT_EQ(linesOf(*built),
              "P-Access-Network-Info: xDSL;network-provided;dsl-location=\"port 5\";cgi-3gpp=1;utran-cell-id-3gpp=2;"
              "i-wlan-node-id=3");
    EXPECT_TRUE(built->isAccessType("XDSL"));
    built->setParameter("np", KxString(""));
    built->setNetworkProvided(false);
    EXPECT_FALSE(built->isNetworkProvided());
}

TEST(SecurityHeaderTest, Reads) {
    expectRows<KxSipSecurityClientHeader>(
        [](const KxSipSecurityClientHeader& header) {
            return joined(header.getMechanism(), header.getPreference().value_or(9999), header.getAlgorithm(),
                          header.getEncryptionAlgorithm(), header.getProtocol(), header.getMode(),
                          header.getClientSPI().value_or(0), header.getServerSPI().value_or(0),
                          header.getClientPort().value_or(0), header.getServerPort().value_or(0));
        },
        {
            {"Security-Client: ipsec-3gpp; alg=hmac-sha-1-96; ealg=aes-cbc;prot=esp;mod=trans;spi-c=4294967295; "
             "spi-s=4294967296;port-c=5061;port-s=x ,tls;q=0.2",
             "ipsec-3gpp|9999|hmac-sha-1-96|aes-cbc|esp|trans|4294967295|0|5061|0 & tls|200|||||0|0|0|0",
             "Security-Client: ipsec-3gpp; alg=hmac-sha-1-96; ealg=aes-cbc;prot=esp;mod=trans;spi-c=4294967295; "
             "spi-s=4294967296;port-c=5061;port-s=x & Security-Client: tls;q=0.2"},
            {"Security-Client: ;q=1", "", "KxSipParseError: Invalid Security-Client header"},
        });
    expectRows<KxSipSecurityVerifyHeader, &KxSipSecurityVerifyHeader::getDigestAlgorithm,
               &KxSipSecurityVerifyHeader::getDigestQop, &KxSipSecurityVerifyHeader::getDigestVerify>(
        {{"Security-Verify: digest;d-alg=MD5;d-qop=auth ;d-ver=\"0a\"", "MD5|auth|0a"}});

    const auto built = KxMake<KxSipSecurityServerHeader>("tls");
    built->setMechanism("ipsec-3gpp");
    built->setPreference(100);
    built->setDigestAlgorithm("MD5");
    built->setDigestQop("auth");
    built->setDigestVerify("0a");
    built->setAlgorithm("hmac-md5-96");
    built->setEncryptionAlgorithm("null");
    built->setProtocol("ah");
    built->setMode("tun");
    built->setClientSPI(1);
    built->setServerSPI(2);
    built->setClientPort(3);
    built->setServerPort(65535);
    EXPECT_EQ(linesOf(*built), "Security-Server: ipsec-3gpp;q=0.1;d-alg=MD5;d-qop=auth;d-ver=\"0a\";alg=hmac-md5-96;"
                               "ealg=null;prot=ah;mod=tun;spi-c=1;spi-s=2;port-c=3;port-s=65535");
    EXPECT_THROW(built->setPreference(1001), KxHandle<KxSipParseError>);
    EXPECT_EQ(built->getPreference(), 100U);
}
