#include "tests/sipobject/support/HeaderSupport.h"

TEST(TextHeaderTest, TextsAreKeptByteForByte) {
    const std::string longest = std::string(99999, ',') + "\xff";
    expectRows<KxSipSubjectHeader, &KxSipSubjectHeader::getSubject>({
        {"s:\v\t Caf\xc3\xa9, \"th\xc3\xa9;\" ,\t ", "Caf\xc3\xa9, \"th\xc3\xa9;\" ,\t ",
         "s: Caf\xc3\xa9, \"th\xc3\xa9;\" ,\t "},
        {"Subject: a\r\n b\r\n\t\tc", "ab\tc", "Subject: ab\tc"},
        {"Subject: " + longest, longest},
    });
    const std::string text = "A/1.0 (b, c)";
    expectRows<KxSipServerHeader, &KxSipServerHeader::getServer>({{"Server: " + text, text}});
    expectRows<KxSipUserAgentHeader, &KxSipUserAgentHeader::getUserAgent>({{"User-Agent: " + text, text}});
    expectRows<KxSipOrganizationHeader, &KxSipOrganizationHeader::getOrganization>({{"Organization: " + text, text}});
    EXPECT_EQ(linesOf(*KxMake<KxSipSubjectHeader>(nullptr)), "Subject: ");
}

TEST(TextHeaderTest, Dates) {
    expectRows<KxSipDateHeader>(
        [](const auto& header) {
            return header.getDate().isValid() ? std::to_string(header.getDate().getSeconds()) : "none";
        },
        {
            {"Date:\tSaturday, 13-Nov-10 23:29:00 GMT ", "1289690940", "Date: Sat, 13 Nov 2010 23:29:00 GMT"},
            {"Date: 1289690940, or so ", "none"},
        });
}

TEST(TextHeaderTest, MIMEVersionsAndTimestampsBeginWithDigits) {
    constexpr const char* kNoVersion = "KxSipParseError: Invalid MIME-Version header";
    expectRows<KxSipMIMEVersionHeader, &KxSipMIMEVersionHeader::getVersionHigh, &KxSipMIMEVersionHeader::getVersionLow>(
        {
            {"MIME-Version: 2 . 010 (x)", "2|10", "MIME-Version: 2.10"},
            {"MIME-Version: 1.", "", kNoVersion},
            {"MIME-Version: .1", "", kNoVersion},
        });
    expectRows<KxSipTimestampHeader, &KxSipTimestampHeader::getTimestamp, &KxSipTimestampHeader::getDelay>({
        {"Timestamp: 0054.2100 \t 00.50", "0054.2100|00.50", "Timestamp: 0054.2100 00.50"},
        {"Timestamp: 54. .5x, 99999999999999999999.1.2", "54.|.5 & 99999999999999999999.1|.2",
         "Timestamp: 54. .5 & Timestamp: 99999999999999999999.1 .2"},
        {"Timestamp: .5", "", "KxSipParseError: Invalid Timestamp header"},
    });
    const auto header = KxMake<KxSipTimestampHeader>("54.10");
    header->setDelay("0.1");
    EXPECT_EQ(linesOf(*header), "Timestamp: 54.10 0.1");
}

TEST(TextHeaderTest, WarningsHaveACodeAnAgentAndAText) {
    expectRows<KxSipWarningHeader, &KxSipWarningHeader::getCode, &KxSipWarningHeader::getAgent,
               &KxSipWarningHeader::getText>({
        {"Warning: 307 h:5060 \"Session, \\\"a\\\\b\\\" \xc3\xa9 \" x, 301 [::1] \"\"",
         "307|h:5060|Session, \"a\\b\" \xc3\xa9  & 301|[::1]|",
         "Warning: 307 h:5060 \"Session, \\\"a\\\\b\\\" \xc3\xa9 \" & Warning: 301 [::1] \"\""},
        {"Warning: 399 h \"\\n\\o\"", "399|h|no", "Warning: 399 h \"no\""},
        {"Warning: 399 h  not \"quoted\" \\ , 1 h", "399|h|not \"quoted\" \\ & 1|h|",
         "Warning: 399 h \"not \\\"quoted\\\" \\\\\" & Warning: 1 h \"\""},
        {"Warning: 399 \"no, agent\"", "399||no, agent"},
        {"Warning: h \"text\"", "", "KxSipParseError: Invalid Warning header"},
    });
    const std::string text(1000, '"');
    const auto header = KxMake<KxSipWarningHeader>(399U, "h", KxString(text));
    EXPECT_EQ(readAs<KxSipWarningHeader>(written(*header))->getText(), text);
}

TEST(TextHeaderTest, ResponseKeysAreOneValue) {
    expectRows<KxSipResponseKeyHeader, &KxSipResponseKeyHeader::getScheme, &KxSipResponseKeyHeader::getParameters>({
        {"Response-Key: pgp version=\"2.6,5\", Key = \"a=;b\" ,c", "pgp|version=\"2.6,5\";Key=\"a=;b\";c",
         "Response-Key: pgp version=\"2.6,5\",Key=\"a=;b\",c"},
        {"Response-Key: pgp;key=1,,;key=2,", "pgp|key=2", "Response-Key: pgp key=2"},
        {"Response-Key: pgp a=\"b,c", "pgp|a=\"b,c"},
        {"Response-Key: \"pgp\"", "", "KxSipParseError: Invalid Response-Key header"},
    });
}
