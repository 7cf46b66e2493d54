#include "tests/sipobject/support/HeaderSupport.h"

TEST(ExpiryHeaderTest, ExpiresIsANumberOrADate) {
    constexpr const char* kTooLong = "KxSipParseError: un-expecting end of file when parsing KxSipExpiresHeader";
    expectRows<KxSipExpiresHeader>(
        [](const KxSipExpiresHeader& header) {
            const std::string date = header.isSipDate() ? std::to_string(header.getDate().getSeconds()) : "";
            return date + "|" + std::to_string(header.getDeltaSeconds());
        },
        {
            {"Expires: 3600", "|3600"},
            {"Expires: 3600,", "|3600", "Expires: 3600"},
            {"Expires: 60\t", "|60", "Expires: 60"},
            {"Expires: 36s;x=1", "|36", "Expires: 36"},
            {"Expires: " + std::string(63, '9'), "|4294967295", "Expires: 4294967295"},
            {"Expires: " + std::string(64, '9'), "", kTooLong},
            {"Expires: Thu, 01 Dec 1994 16:00:00 GMT", "786297600|0"},
            {"Expires: 12 Dec 1994", "787190400|0", "Expires: Mon, 12 Dec 1994 00:00:00 GMT"},
            // any other text is kept as a date that could not be read
            {"Expires: soon, " + std::string(100, '!'), "0|0", "Expires: soon, " + std::string(100, '!')},
            {"Expires: 60, 70 ", "0|0"},
            {"Expires: \v060", "0|0", "Expires: 060", "Expires: 60"},
        });
    EXPECT_TRUE(KxMake<KxSipExpiresHeader>("Thu, 01 Dec 1994 16:00:00 GMT")->isSipDate());
    EXPECT_EQ(linesOf(*KxMake<KxSipExpiresHeader>(nullptr)), "Expires: ");
}

TEST(ExpiryHeaderTest, MinExpiresInsistsOnADigit) {
    constexpr const char* kNoDigit = "KxSipParseError: Invalid Minimum SE header";
    expectRows<KxSipMinExpiresHeader, &KxSipMinExpiresHeader::getDeltaSeconds>({
        {"Min-Expires:\t060s, 99999999999", "60 & 4294967295", "Min-Expires: 60 & Min-Expires: 4294967295"},
        {"Min-Expires: 1, \xb2", "", kNoDigit},
        {"Min-Expires: \f1", "", kNoDigit},
    });
}

TEST(ExpiryHeaderTest, SessionTimersHaveParameters) {
    using Header = KxSipSessionExpiresHeader;
    expectRows<Header, &Header::getDeltaSeconds, &Header::getRefresher, &Header::isRefresherUAC,
               &Header::isRefresherUAS>({
        {"Session-Expires: 1800;refresher=uac", "1800|uac|1|0"},
        {"x: 090 ; X=\"1,2\" ;Refresher = UAS;y", "90|UAS|0|1", "x: 90;X=\"1,2\";Refresher=UAS;y"},
        {"x: 4294967296;refresher=proxy, 3", "4294967295|proxy|0|0 & 3||0|0",
         "x: 4294967295;refresher=proxy & Session-Expires: 3"},
        {"x: 1800s;refresher=uac", "1800||0|0", "x: 1800"},
        {"Session-Expires: never", "", "KxSipParseError: Invalid Session-Expires header"},
    });
    expectRows<KxSipMinSEHeader, &KxSipMinSEHeader::getDeltaSeconds, &KxSipMinSEHeader::getParameters>({
        {"Min-SE: 60;a=b;c", "60|a=b;c"},
        {"Min-SE: 1, x", "", "KxSipParseError: Invalid Minimum SE header"},
    });
}

TEST(ExpiryHeaderTest, RetryAfterHasACommentInFrontOfItsParameters) {
    expectRows<KxSipRetryAfterHeader, &KxSipRetryAfterHeader::getDeltaSeconds, &KxSipRetryAfterHeader::getComment,
               &KxSipRetryAfterHeader::getDuration>({
        {"Retry-After: 5( a, (b;()) \\) \\(c ) ;x;DURATION=\"6\", 7", "5| a, (b;()) \\) \\(c |\"6\" & 7||",
         "Retry-After: 5 ( a, (b;()) \\) \\(c );x;DURATION=\"6\" & Retry-After: 7"},
        {"Retry-After: 5 ();x", "5||", "Retry-After: 5;x"},
        {"Retry-After: 5 " + std::string(50000, '(') + std::string(50000, ')') + ";duration=6",
         "5|" + std::string(49999, '(') + std::string(49999, ')') + "|6",
         "Retry-After: 5 " + std::string(50000, '(') + std::string(50000, ')') + ";duration=6"},
        // a comment that is not closed is dropped with all that follows it
        {"Retry-After: 5 (a(b), 6;duration=7", "5||", "Retry-After: 5"},
        {"Retry-After: 5 (a\\)", "5||", "Retry-After: 5"},
    });
    expectRows<KxSipRetryAfterHeader, &KxSipRetryAfterHeader::getDeltaSeconds, &KxSipRetryAfterHeader::getText>({
        {"Retry-After: 5, Fri, 26 Sep 1997 21:00:00 GMT (x);y ", "5| & 0|Fri, 26 Sep 1997 21:00:00 GMT (x);y ",
         "Retry-After: 5 & Retry-After: Fri, 26 Sep 1997 21:00:00 GMT (x);y "},
    });
    const auto soon = readAs<KxSipRetryAfterHeader>("Retry-After: soon");
    soon->setDuration("5");
    EXPECT_EQ(linesOf(*soon), "Retry-After: soon;duration=5");
    soon->setDeltaSeconds(60);
    EXPECT_EQ(linesOf(*soon), "Retry-After: 60;duration=5");
}
