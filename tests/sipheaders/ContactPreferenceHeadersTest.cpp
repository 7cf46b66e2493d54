#include "sipheaders/KxSipAcceptContactHeader.h"
#include "sipheaders/KxSipAcceptResourcePriorityHeader.h"
#include "sipheaders/KxSipRejectContactHeader.h"
#include "sipheaders/KxSipRequestDispositionHeader.h"
#include "sipheaders/KxSipResourcePriorityHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

TEST(ContactPreferenceHeadersTest, ReadFeatures) {
    expectRows<KxSipAcceptContactHeader>(
        [](const KxSipAcceptContactHeader& header) {
            return joined(header.getFeature("methods"), header.getFeature("+sip.instance"),
                          header.getFeature("audio").isNil(), header.isRequired(), header.isExplicit(),
                          header.getCompactToken());
        },
        {
            {"A: * ;methods=\"INVITE,BYE\";audio;Explicit , *;+sip.instance=\"<urn:a;b>\";audio=\"FALSE\";require",
             "INVITE,BYE||0|0|1|a & |<urn:a;b>|0|1|0|a",
             "A: * ;methods=\"INVITE,BYE\";audio;Explicit & "
             "Accept-Contact: *;+sip.instance=\"<urn:a;b>\";audio=\"FALSE\";require"},
            {"Accept-Contact: *", "||1|0|0|a"},
            {"Accept-Contact: <sip:a>;audio", "", "KxSipParseError: Invalid Accept-Contact header"},
            {"Accept-Contact: **;audio", "", "KxSipParseError: Invalid Accept-Contact header"},
        });
    expectRow<KxSipRejectContactHeader>(
        {"j: *;actor=\"msg-taker\";video", "msg-taker||j"}, [](const KxSipRejectContactHeader& header) {
            return joined(header.getFeature("ACTOR"), header.getFeature("video"), header.getCompactToken());
        });
}

TEST(ContactPreferenceHeadersTest, AreBuiltFromFeatures) {
    const auto header = KxMake<KxSipAcceptContactHeader>();
    header->setFeature("audio");
    header->setFeature("methods", "INVITE,\"BYE\"");
    header->setExplicit(true);
    header->setRequired(true);
    header->setExplicit(false);
    EXPECT_EQ(linesOf(*header), "Accept-Contact: *;audio;methods=\"INVITE,\\\"BYE\\\"\";require");
    EXPECT_NE(outcomeOf([&] { header->setFeature("", "x"); }), "");
    EXPECT_NE(outcomeOf([&] { header->setFeature("a", "\n"); }), "");
}

TEST(RequestDispositionHeaderTest, ReadsDirectives) {
    expectRows<KxSipRequestDispositionHeader>(
        [](const KxSipRequestDispositionHeader& header) {
            return joined(header.getDirective(), header.isDirective("no-fork"), header.getCompactToken());
        },
        {
            {"d: proxy,No-Fork ,x", "proxy|0|d & No-Fork|1|d & x|0|d",
             "d: proxy & Request-Disposition: No-Fork & Request-Disposition: x"},
            {"Request-Disposition: \"proxy\"", "", "KxSipParseError: Invalid Request-Disposition header"},
        });
    const auto header = KxMake<KxSipRequestDispositionHeader>("fork");
    header->setDirective("no-fork");
    EXPECT_EQ(linesOf(*header), "Request-Disposition: no-fork");
}

TEST(ResourceValueHeadersTest, ReadNamespaceAndPriority) {
    constexpr const char* kError = "KxSipParseError: Invalid Resource-Priority header";
    expectRows<KxSipResourcePriorityHeader, &KxSipResourcePriorityHeader::getNamespace,
               &KxSipResourcePriorityHeader::getPriority>({
        {"Resource-Priority: DSN.flash-override ,q735.0", "DSN|flash-override & q735|0",
         "Resource-Priority: DSN.flash-override & Resource-Priority: q735.0"},
        {"Resource-Priority: wps", "", kError},
        {"Resource-Priority: .0", "", kError},
        {"Resource-Priority: wps. 0", "", kError},
        {"Resource-Priority: wps.0.1", "", kError},
        {"Resource-Priority: wps.0;x", "", "KxSipParseError: SIP Header parse error : text after the value"},
    });
    expectRow<KxSipAcceptResourcePriorityHeader>({"Accept-Resource-Priority: ets.4", "1|1|0"}, [](const auto& header) {
        return joined(header.isNamespace("ETS"), header.isPriority("4"), header.isPriority("ets"));
    });
}

TEST(ResourceValueHeadersTest, AreBuiltFromTokensOnly) {
    const auto header = KxMake<KxSipAcceptResourcePriorityHeader>("dsn", "flash");
    header->setNamespace("wps");
    header->setPriority("0");
    for (const char* const part : {"", "a.b", "a b", "a,b", "\n"}) {
        EXPECT_NE(outcomeOf([&] { header->setNamespace(part); }), "") << part;
        EXPECT_NE(outcomeOf([&] { KxMake<KxSipResourcePriorityHeader>("dsn", part); }), "") << part;
    }
    EXPECT_EQ(linesOf(*header), "Accept-Resource-Priority: wps.0");
}
