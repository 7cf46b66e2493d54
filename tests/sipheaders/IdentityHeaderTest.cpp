#include "sipheaders/KxSipBase64Url.h"
#include "sipheaders/KxSipIdentityHeader.h"
#include "sipheaders/KxSipPrivacyHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

TEST(Base64UrlTest, ReadsAndWrites) {
    for (const auto& [bytes, text] :
         std::initializer_list<std::pair<std::string, std::string>>{// RFC 4648 10
                                                                    {"", ""},
                                                                    {"f", "Zg"},
                                                                    {"fo", "Zm8"},
                                                                    {"foo", "Zm9v"},
                                                                    {"foobar", "Zm9vYmFy"},
                                                                    {"\xfb\xff\xfe", "-__-"}}) {
        EXPECT_EQ(KxSipBase64Url::sEncode(bytes), text);
        EXPECT_EQ(KxSipBase64Url::sDecode(text), bytes);
    }
    const std::string all = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    EXPECT_EQ(KxSipBase64Url::sEncode(*KxSipBase64Url::sDecode(all)), all);
    for (const auto& [text, bytes] :
         std::initializer_list<std::pair<std::string, std::string>>{{"+//+", "\xfb\xff\xfe"},
                                                                    {"Zg==", "f"},
                                                                    {"Zm8=", "fo"},
                                                                    {"Z", "none"},
                                                                    {"Zg=", "none"},
                                                                    {"=", "none"},
                                                                    {"====", "none"},
                                                                    {"Z===", "none"},
                                                                    {"Zm 9", "none"},
                                                                    {std::string("Zm\0v", 4), "none"}}) {
        EXPECT_EQ(KxSipBase64Url::sDecode(text).value_or("none"), bytes) << text;
    }
}

TEST(IdentityHeaderTest, Reads) {
    const std::string invalid = "KxSipParseError: Invalid Identity header";
    expectRows<KxSipIdentityHeader>(
        [](const KxSipIdentityHeader& header) {
            return joined(header.getJOSEHeader().value_or("-"), header.getPayload().value_or("-"),
                          header.getSignature(), header.isCompactForm(), header.getInfo(), header.getAlgorithm(),
                          header.getPassportType(), header.isPassportType("SHAKEN"));
        },
        {
            {"Identity: eyJhIjoxfQ.eyJkZXN0Ijoie30ifQ.s-_ ; info = <https://h/c;1,2?a=\\> ;Alg=ES256;ppt=\"shaken\";x",
             "{\"a\":1}|{\"dest\":\"{}\"}|s-_|0|https://h/c;1,2?a=\\|ES256|shaken|1"},
            {"y: ..s+/=;ppt=div;info=https://h/c", "||s+/=|1|https://h/c||div|0"},
            {"Identity: a.b.c.d;info=<h>;ppt=", "-|-||0|h|||0"},
            {"Identity: e!.b.c;info=<h>", "", invalid},
            {"Identity: a.b.c;info=<>", "", invalid},
            {"Identity: a.b.c;info=<h h>", "", invalid},
            {"Identity: a.b.c;info=<h", "", invalid},
            {"Identity: a.b.c;x=\"y", "", invalid},
            {"Identity: a.b.c;;x", "", invalid},
            {"Identity: a.b.c;x=>", "", "KxSipParseError: SIP Header parse error : text after the value"},
            {"Identity: a.b.c;x=<y>z", "", "KxSipParseError: SIP Header parse error : text after the value"},
            {"Identity: a.Z.c;info=<h,> , eyJ9.e30.f", "-|-|c|0|h,|||0 & {\"}|{}|f|0||||0",
             "Identity: a.Z.c;info=<h,> & Identity: eyJ9.e30.f"},
        });
    EXPECT_EQ(readAs<KxSipIdentityHeader>("Identity: a.b.c")->getJOSEHeader(), std::nullopt);
}

TEST(IdentityHeaderTest, IsBuiltAndChanged) {
    const auto header = readAs<KxSipIdentityHeader>("y:  a.b.c ;info=<h> ; X");
    header->setPassportType("rph");
    EXPECT_EQ(linesOf(*header), "y: a.b.c;info=<h>;X;ppt=rph");
    header->setParameter("info", KxString("<"));
    EXPECT_EQ(header->getInfo(), "<");

    const auto built = KxMake<KxSipIdentityHeader>("a.b.c", "https://h/c,1");
    built->setAlgorithm("ES256");
    for (const char* const text : {"", "a b", "a,b", "a\r\n"}) {
        EXPECT_THROW(built->setPassport(text), KxHandle<KxSipParseError>);
    }
    for (const char* const uri : {"", "a b", "a>b", "a\nb"}) {
        EXPECT_THROW(built->setInfo(uri), KxHandle<KxSipParseError>);
    }
    EXPECT_EQ(linesOf(*built), "Identity: a.b.c;info=<https://h/c,1>;alg=ES256");
    EXPECT_EQ(KxSipIdentityHeader::sRead("d.e.f;info=<h>")->getPassport(), "d.e.f");
}

TEST(PrivacyHeaderTest, Reads) {
    expectRows<KxSipPrivacyHeader>(
        [](const KxSipPrivacyHeader& header) {
            std::string values;
            for (const KxString& value : header.getValues()) {
                values.append(value).append("/");
            }
            return joined(values, header.isNone(), header.isCritical(), header.isID(), header.isHistory());
        },
        {
            {"Privacy: ID ;\tcritical;history;ID", "ID/critical/history/|0|1|1|1"},
            {"Privacy: header,none", "header/none/|1|0|0|0"},
            {"Privacy: id;", "", "KxSipParseError: Invalid Privacy header"},
            {"Privacy: id=1", "", "KxSipParseError: Invalid Privacy header"},
            {"Privacy: id x", "", "KxSipParseError: Invalid Privacy header"},
        });
}

TEST(PrivacyHeaderTest, IsASet) {
    const auto header = readAs<KxSipPrivacyHeader>("Privacy:  id ; user;ID");
    header->add("USER");
    EXPECT_EQ(linesOf(*header), "Privacy: id ; user;ID");
    header->add("critical");
    EXPECT_TRUE(header->remove("Id"));
    EXPECT_EQ(linesOf(*header), "Privacy: user;critical");
    EXPECT_TRUE(header->remove("user"));
    EXPECT_FALSE(header->remove("user"));
    EXPECT_FALSE(header->remove("critical"));
    for (const char* const value : {"", "a;b", "a\r\n"}) {
        EXPECT_THROW(header->add(value), KxHandle<KxSipParseError>);
    }
    EXPECT_EQ(linesOf(*header), "Privacy: critical");
    EXPECT_EQ(linesOf(*KxMake<KxSipPrivacyHeader>("none")), "Privacy: none");
}
