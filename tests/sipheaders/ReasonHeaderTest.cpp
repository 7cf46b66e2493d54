#include "sipheaders/KxSipReasonHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

TEST(ReasonHeaderTest, Reads) {
    expectRows<KxSipReasonHeader>(
        [](const KxSipReasonHeader& header) {
            return joined(header.getProtocol(), header.getCause().value_or(0), header.getText());
        },
        {
            {"Reason: SIP ;cause=200 ;text=\"Call completed elsewhere, \\\"x\\\"\" , Q.850;cause=\"16\"",
             "SIP|200|Call completed elsewhere, \"x\" & Q.850|16|",
             "Reason: SIP ;cause=200 ;text=\"Call completed elsewhere, \\\"x\\\"\" & Reason: Q.850;cause=\"16\""},
            {"reason: sip;Cause=2x;text=bye", "sip|0|bye"},
            {"Reason: ;cause=1", "", "KxSipParseError: Invalid Reason header"},
        });
}

TEST(ReasonHeaderTest, AChangedValueIsWrittenAnew) {
    const auto reason = readAs<KxSipReasonHeader>("Reason:Q.850 ; TEXT = \"a\\bc\" ;x");
    EXPECT_EQ(linesOf(*reason), "Reason: Q.850 ; TEXT = \"a\\bc\" ;x");
    reason->setCause(16);
    reason->setText("\\,\"");
    EXPECT_EQ(linesOf(*reason), "Reason: Q.850;TEXT=\"\\\\,\\\"\";x;cause=16");
    EXPECT_EQ(linesOf(*KxMake<KxSipReasonHeader>("SIP", 302U)), "Reason: SIP;cause=302");
}
