#include "sipobject/address/KxTelURL.h"

#include "tests/sipobject/support/MessageSupport.h"

namespace {

/** number, "+" where it is global, parameters; then the printed form. */
std::string readTel(KxInputStream& in) {
    return outcomeOf([&in] {
        KxTelURL url;
        url.parse(in);
        const char* const number = url.getPhoneNumber();
        return std::string(number == nullptr ? "(none)" : number) + (url.isGlobalNumber() ? "|+|" : "||") +
               std::string(url.getParameters()->getString().view()) + "  " + std::string(url.getString().view());
    });
}

} // namespace

TEST(TelURLTest, Reads) {
    const struct {
        std::string_view input;
        const char* result;
        const char* rest;
    } rows[] = {
        {"tel:+1-555-0100", "+1-555-0100|+|  tel:+1-555-0100", ""},
        {"tel:5550100;phone-context=x", "5550100||phone-context=x  tel:5550100;phone-context=x", ""},
        {"<tel:123>;x", "123||  tel:123", ";x"},
        {"xyz:123", "123||  tel:123", ""},
        {"tel: 12 34 \r\nX", "12 34||  tel:12 34", "X"},
        {"tel:1, 2", "1, 2||  tel:1, 2", ""},
        {"tel:1+2+3", "1+23|+|  tel:1+23", ""}, // the first "+" counts, wherever it stands
        {"tel:+1; a = b+c:d ;e ", "+1|+|a=b+cd;e  tel:+1;a=b+cd;e", ""},
        {"tel:1:2:3", "123||  tel:123", ""},
        {"<+123>", "+123|+|  tel:+123", ""},
        {"+123", "(none)||  tel:", ""},
        {"123;x", "(none)||  tel:", "x"}, // no colon, so the parameters are the header's
        {"tel:", "||  tel:", ""},
        {"tel:;a", "||a  tel:;a", ""},
        {"tel:1;", "1||  tel:1", ""},
        {"tel:1;a<b:2", "2||  tel:2", ""},
        {"tel:1;a<b", "1||  tel:1", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(readAnyhow(row.input, readTel), (Reading{row.result, row.rest})) << row.input;
    }
}

TEST(TelURLTest, HoldsSoManyCharacters) {
    const std::string fits = "tel:" + std::string(1020, '5');
    EXPECT_EQ(readAnyhow(fits + ":::\n5", readTel), (Reading{std::string(1020, '5') + "||  " + fits, "5"}));
    EXPECT_EQ(readAnyhow(fits + "67", readTel), (Reading{"KxSipParseError: Invalid TelURL", "7"}));
    EXPECT_EQ(readAnyhow("tel:1;" + std::string(1023, 'a'), readTel).result, "KxSipParseError: Invalid TelURL");
}

TEST(TelURLTest, EqualAsPrinted) {
    EXPECT_TRUE(KxTelURL("tel:1;a=b") == KxTelURL("<TEL: 1;a=b;>"));
    EXPECT_FALSE(KxTelURL("tel:1;a=b") == KxTelURL("tel:1;A=b"));
    EXPECT_FALSE(KxTelURL("tel:1-2") == KxTelURL("tel:12"));
}

TEST(TelURLTest, CopiesHaveTheirOwnParameters) {
    KxTelURL url("tel:+1;a=b");
    const KxTelURL copy(url);
    url.clearParameters();
    EXPECT_EQ(copy.getString(), "tel:+1;a=b");
    EXPECT_TRUE(copy.isGlobalNumber());
}
