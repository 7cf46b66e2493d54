#include "tests/sipobject/support/HeaderSupport.h"

TEST(InfoHeaderTest, URIsStandInBrackets) {
    expectRows<KxSipAlertInfoHeader>(
        [](const auto& header) {
            EXPECT_EQ(header.getURI().isNil(), !header.getText().empty());
            if (header.getURI().isNil()) {
                return joined(header.getText(), header.getParameters());
            }
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
            // any other text is kept unchanged, up to a comma outside quotes and brackets
            {"Alert-Info:  ;info=alert-autoanswer ,\f<tel:1>,<tel:2>",
             ";info=alert-autoanswer | & \f<tel:1>| & KxTelURL|tel:2||",
             "Alert-Info: ;info=alert-autoanswer  & Alert-Info: \f<tel:1> & Alert-Info: <tel:2>"},
            {"Alert-Info: <http://h>, <sips:a,b>;x=\"1,\\\",2\"\t,<>,<sip:@h",
             "KxURI|http://h|| & <sips:a,b>;x=\"1,\\\",2\"\t| & <>| & <sip:@h|",
             "Alert-Info: <http://h> & Alert-Info: <sips:a,b>;x=\"1,\\\",2\"\t & Alert-Info: <> & Alert-Info: <sip:@h"},
            {"Alert-Info: x, \v,y", "", "KxSipParseError: Invalid Alert-Info header"},
        });
    expectRows<KxSipErrorInfoHeader>(
        [](const auto& header) {
            return joined(header.getURL().isNil() ? header.getText() : header.getURL()->getHost());
        },
        {{"Error-Info: <sip:a@h>", "h"}, {"Error-Info: <sips:a@h>", "<sips:a@h>"}});
    const auto alert = readAs<KxSipAlertInfoHeader>("Alert-Info: <sip:h>;x");
    for (const char* const line : {"Alert-Info: <sips:h>", "Alert-Info: <sip:i>"}) { // nothing of the old value remains
        KxByteArrayInputStream in{std::string_view(line)};
        alert->parse(in);
        EXPECT_EQ(linesOf(*alert), line);
    }
}

/** Call-Info is only built by callers; a line of that name is read as an unknown header. */
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
