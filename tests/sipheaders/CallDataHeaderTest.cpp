#include "sipheaders/KxSipPChargingVectorHeader.h"
#include "sipheaders/KxSipSessionIDHeader.h"
#include "sipheaders/KxSipUserToUserHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

const std::string kUUID = "ab30317f1a784dc48ff824d0d3715d86";

} // namespace

TEST(SessionIDHeaderTest, Reads) {
    using H = KxSipSessionIDHeader;
    const std::string invalid = "KxSipParseError: Invalid Session-ID header";
    expectRows<H, &H::getLocalUUID, &H::getRemoteUUID, &H::isLocalNil, &H::isRemoteNil>({
        {"Session-ID: " + kUUID + " ;x;remote=" + H::kNilUUID, kUUID + "|" + H::kNilUUID + "|0|1"},
        {"Session-ID: 0000000000000000000000000000000A;remote=x", "0000000000000000000000000000000A|x|0|0"},
        {"Session-ID: " + std::string(H::kNilUUID), H::kNilUUID + std::string("||1|0")},
        {"Session-ID: " + kUUID + "0", "", invalid},
        {"Session-ID: ab30317f-1a78-4dc4-8ff8-24d0d3715d", "", invalid},
        {"Session-ID: " + kUUID + ", " + kUUID, "", "KxSipParseError: SIP Header parse error : text after the value"},
    });
    const auto built = KxMake<H>("AB30317F1A784DC48FF824D0D3715D86", H::kNilUUID);
    EXPECT_EQ(linesOf(*built), "Session-ID: " + kUUID + ";remote=" + H::kNilUUID);
    EXPECT_THROW(built->setRemoteUUID(kUUID.substr(1)), KxHandle<KxSipParseError>);
    built->setRemoteUUID(H::sNewUUID());
    EXPECT_FALSE(built->isRemoteNil());
}

TEST(UserToUserHeaderTest, Reads) {
    const std::string invalid = "KxSipParseError: Invalid User-to-User header";
    expectRows<KxSipUserToUserHeader>(
        [](const KxSipUserToUserHeader& header) {
            return joined(header.getData(), header.getBytes().value_or("none"), header.getPurpose(),
                          header.getContent(), header.getEncoding(), header.isPurpose("ISDN-uui"));
        },
        {
            {"User-to-User: 4142;encoding=HEX ;purpose=isdn-uui;content=\"a,b\" , \"6A\"",
             "4142|AB|isdn-uui|a,b|HEX|1 & 6A|j||||0",
             "User-to-User: 4142;encoding=HEX ;purpose=isdn-uui;content=\"a,b\" & User-to-User: \"6A\""},
            {"User-to-User: \"\\\"x, \\\\\";encoding=text", "\"x, \\|none|||text|0"},
            {"User-to-User: QUJ/==", "QUJ/==|none||||0"},
            {"User-to-User: 414", "414|none||||0"},
            {"User-to-User: \"414", "", invalid},
            {"User-to-User: \"414\\", "", invalid},
            {"User-to-User: ;encoding=hex", "", invalid},
            {"User-to-User: 41\"42\"", "", "KxSipParseError: Invalid text after the value of a header"},
        });
    const auto built = KxSipUserToUserHeader::sOfBytes(std::string_view("\x04\0\xff", 3));
    built->setPurpose("isdn-uui");
    built->setContent("isdn uui");
    EXPECT_EQ(linesOf(*built), "User-to-User: 0400ff;encoding=hex;purpose=isdn-uui;content=\"isdn uui\"");
    built->setBytes("");
    EXPECT_EQ(built->getBytes(), "");
    built->setData("a,b");
    built->setEncoding("text");
    EXPECT_EQ(linesOf(*built), "User-to-User: \"a,b\";encoding=text;purpose=isdn-uui;content=\"isdn uui\"");
}

TEST(PChargingVectorHeaderTest, Reads) {
    using H = KxSipPChargingVectorHeader;
    const std::string invalid = "KxSipParseError: Invalid P-Charging-Vector header";
    expectRows<H, &H::getICIDValue, &H::getICIDGeneratedAt, &H::getOrigIOI, &H::getTermIOI, &H::getTransitIOI,
               &H::getRelatedICID>({
        {"P-Charging-Vector: icid-value=\"1,2;3\" ;icid-generated-at=[2001:db8::1]; ORIG-IOI=home1.net;term-ioi=t;x",
         "1,2;3|[2001:db8::1]|home1.net|t||"},
        {"P-Charging-Vector: orig-ioi=a;icid-value=1;transit-ioi=\"a.1,void\";related-icid=2", "1||a||a.1,void|2"},
        {"P-Charging-Vector: orig-ioi=a", "", invalid},
        {"P-Charging-Vector: icid-value=", "", invalid},
        {"P-Charging-Vector: ;icid-value=1", "", invalid},
        {"P-Charging-Vector: icid-value=\"1", "", invalid},
        {"P-Charging-Vector: icid-value=1,2", "", "KxSipParseError: SIP Header parse error : text after the value"},
    });
    const auto built = KxMake<H>("a b");
    built->setICIDGeneratedAt("[::1]");
    built->setOrigIOI("o");
    built->setTermIOI("t");
    built->setTransitIOI("a.1,void");
    built->setRelatedICID("r");
    EXPECT_EQ(linesOf(*built), "P-Charging-Vector: icid-value=\"a b\";icid-generated-at=[::1];orig-ioi=o;term-ioi=t;"
                               "transit-ioi=\"a.1,void\";related-icid=r");
    EXPECT_THROW(built->setICIDValue(""), KxHandle<KxSipParseError>);
    built->setICIDGeneratedAt("[;");
    EXPECT_EQ(built->getParameter("icid-generated-at"), "\"[;\"");
}
