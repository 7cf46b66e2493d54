#include "sipobject/headers/KxSipExpiresHeader.h"
#include "sipobject/headers/KxSipMaxForwardsHeader.h"
#include "sipobject/headers/KxSipMinExpiresHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

TEST(ExpiryHeaderTest, ExpiresIsANumberOrADate) {
    constexpr const char* kTooLong = "KxSipParseError: un-expecting end of file when parsing KxSipExpiresHeader";
    expectRows<KxSipExpiresHeader>(
        [](const KxSipExpiresHeader& header) {
            const std::string date = header.isSipDate() ? std::to_string(header.getDate().getSeconds()) : "";
            return date + "|" + std::to_string(header.getDeltaSeconds());
        },
        {
            {"Expires: 3600", "|3600", "Expires: 3600"},
            {"expires:\t 3600   ", "|3600", "expires: 3600"},
            {"Expires: 3600,", "|3600", "Expires: 3600"},
            {"Expires: 36s;x=1", "|36", "Expires: 36"},
            {"Expires: 60\t", "|60", "Expires: 60"},
            {"Expires: 4294967296", "|4294967295", "Expires: 4294967295"},
            {"Expires: " + std::string(63, '9'), "|4294967295", "Expires: 4294967295"},
            {"Expires: " + std::string(64, '9'), "", kTooLong},
            {"Expires: " + std::string(64, '0') + " x", "", kTooLong},
            {"Expires: Thu, 01 Dec 1994 16:00:00 GMT", "786297600|0", "Expires: Thu, 01 Dec 1994 16:00:00 GMT"},
            {"Expires: 12 Dec 1994", "787190400|0", "Expires: Mon, 12 Dec 1994 00:00:00 GMT"},
            // what is neither is a date that could not be read
            {"Expires: soon, " + std::string(100, '!'), "0|0", "Expires: soon, " + std::string(100, '!')},
            {"Expires: 60, 70 ", "0|0", "Expires: 60, 70 "},
            {"Expires: -1", "0|0", "Expires: -1"},
            {"Expires: \v060", "0|0", "Expires: 060", "Expires: 60"},
        });
    const KxHandle<KxSipExpiresHeader> header(new KxSipExpiresHeader("Thu, 01 Dec 1994 16:00:00 GMT"));
    EXPECT_TRUE(header->isSipDate());
    EXPECT_EQ(linesOf(*header), "Expires: Thu, 01 Dec 1994 16:00:00 GMT");
    EXPECT_EQ(linesOf(*KxHandle<KxSipExpiresHeader>(new KxSipExpiresHeader(nullptr))), "Expires: ");
}

TEST(ExpiryHeaderTest, MinExpiresInsistsOnADigit) {
    constexpr const char* kNoDigit = "KxSipParseError: Invalid Minimum SE header";
    expectRows<KxSipMinExpiresHeader>(
        [](const auto& header) { return std::to_string(header.getDeltaSeconds()); },
        {
            {"Min-Expires: 60", "60", "Min-Expires: 60"},
            {"Min-Expires:\t060s, 99999999999", "60 & 4294967295", "Min-Expires: 60 & Min-Expires: 4294967295"},
            {"Min-Expires: x", "", kNoDigit},
            {"Min-Expires: -1", "", kNoDigit},
            {"Min-Expires: 1, \xb2", "", kNoDigit},
            {"Min-Expires: \f1", "", kNoDigit},
        });
}

TEST(ExpiryHeaderTest, MaxForwardsTakesWhatDigitsThereAre) {
    expectRows<KxSipMaxForwardsHeader>([](const auto& header) { return std::to_string(header.getMaxForwards()); },
                                       {
                                           {"Max-Forwards: 70", "70", "Max-Forwards: 70"},
                                           {"Max-Forwards: 0", "0", "Max-Forwards: 0"},
                                           {"Max-Forwards: seventy", "0", "Max-Forwards: 0"},
                                       });
    EXPECT_EQ(KxSipMaxForwardsHeader::sGetExpandedToken(), "Max-Forwards");
}
