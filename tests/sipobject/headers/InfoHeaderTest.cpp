#include "tests/sipobject/support/HeaderSupport.h"

TEST(InfoHeaderTest, URIsStandInBrackets) {
    constexpr const char* kInvalid = "KxSipParseError: Invalid Alert-Info header";
    expectRows<KxSipAlertInfoHeader>(
        [](const auto& header) {
            return joined(className(*header.getURI()), header.getURI()->getString(),
                          header.getURL().isNil() ? "" : header.getURL()->getParameters()->getString(),
                          header.getParameters()->getString());
        },
        {
            {"Alert-Info: <http://h/a,b;c=\"d> ; Info = \"1,2\" , <tel:+1;x=2>;y",
             "KxURI|http://h/a,b;c=\"d||Info=\"1,2\" & KxTelURL|tel:+1;x=2||y",
             "Alert-Info: <http://h/a,b;c=\"d>;Info=\"1,2\" & Alert-Info: <tel:+1;x=2>;y"},
            // the parameters of a SIP URL are its own
            {"Alert-Info: <sip:a@h;x=1;y>;z=2", "KxSipURL|sip:a@h;x=1;y|x=1;y|z=2"},
            {"Alert-Info:\t< http: //h >", "KxURI|http://h||", "Alert-Info: <http://h>"},
            {"Alert-Info: http://h", "", kInvalid},
            {"Alert-Info: <http://h", "", kInvalid},
            {"Alert-Info: <http://h>, <", "", kInvalid},
            {"Alert-Info: <sip:@h>", "", "KxSipParseError: Sip URL wrong format (\"@\" present without a user part)"},
        });
    expectRows<KxSipErrorInfoHeader>(
        [](const auto& header) { return header.getURL()->getHost().c_str(); },
        {{"Error-Info: <sip:a@h>", "h"}, {"Error-Info: x", "", "KxSipParseError: Invalid Error-Info header"}});
}

/** Call-Info is made by callers; what is read under that name is kept as text. */
TEST(InfoHeaderTest, CallersBuildThem) {
    const auto uri = KxMake<KxURI>("http");
    uri->parse("http://h/a.png");
    const auto header = KxMake<KxSipCallInfoHeader>(uri);
    uri->parse("http://changed");
    header->setPurpose("icon");
    EXPECT_EQ(header->getHeaderID(), KxHeaderIDs::kCallInfo);
    EXPECT_EQ(linesOf(*header), "Call-Info: <http://h/a.png>;purpose=icon");
    EXPECT_EQ(className(*readHeader(written(*header))), "KxSipUnknownHeader");

    EXPECT_EQ(KxMake<KxSipCallInfoHeader>("<sip:h>;purpose=card")->getPurpose(), "card");
    EXPECT_EQ(outcomeOf([] { return linesOf(*KxMake<KxSipCallInfoHeader>("sip:h")); }),
              "KxSipParseError: Invalid Call-Info header");
    EXPECT_EQ(linesOf(*KxMake<KxSipErrorInfoHeader>(KxHandle<KxURI>())), "Error-Info: <>");
}
