#include "sipobject/address/KxTelURL.h"

#include "tests/sipobject/support/MessageSupport.h"

/** Number, "+" if it is global, parameters; then the printed form. */
static std::string readTel(KxInputStream& in) {
    return outcomeOf([&in] {
        KxTelURL url;
        url.parse(in);
        const char* const number = url.getPhoneNumber();
        return std::string(number == nullptr ? "(none)" : number) + (url.isGlobalNumber() ? "|+|" : "||") +
               std::string(url.getParameters()->getString().view()) + "  " + std::string(url.getString().view());
    });
}

TEST(TelURLTest, Reads) {
    const std::string fits = "tel:" + std::string(1020, '5');
    expectReads<readTel>({
        {"xyz:123", "123||  tel:123"},
        {"tel: 1\r2 34 \r;a\r=b\r\nX", "12 34||a=b  tel:12 34;a=b", "X"},
        {"tel:1+2+3", "1+23|+|  tel:1+23"}, // the first "+" makes it global, wherever it is
        {"tel:+1; a = b+c:d ;e ", "+1|+|a=b+cd;e  tel:+1;a=b+cd;e"},
        {"+123", "(none)||  tel:"},
        {"123;x", "(none)||  tel:", "x"}, // no colon, so the parameters are the header's
        {"tel:;a", "||a  tel:;a"},
        {"tel:1;a<b:2", "2||  tel:2"},
        {fits + ":::\n5", std::string(1020, '5') + "||  " + fits, "5"},
        {fits + "67", "KxSipParseError: Invalid TelURL", "7"},
    });
}

TEST(TelURLTest, EqualAsPrinted) {
    EXPECT_TRUE(KxTelURL("tel:1;a=b") == KxTelURL("<TEL: 1;a=b;>"));
    EXPECT_FALSE(KxTelURL("tel:1;a=b") == KxTelURL("tel:1;A=b"));
    KxTelURL url("tel:+1;a=b");
    const KxTelURL copy(url);
    url.clearParameters();
    EXPECT_EQ(copy.getString(), "tel:+1;a=b");
    EXPECT_TRUE(copy.isGlobalNumber());
}
