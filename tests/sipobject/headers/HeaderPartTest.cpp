// Parts of headers as numbers, comparisons of them, and setters, in both grammars.

#include "tests/sipobject/support/HeaderSupport.h"

using namespace std::string_literals;

namespace {

/** What `numberOf` returns for each text; "-" for none. */
template <class NumberOf>
std::string numbersOf(std::initializer_list<const char*> texts, NumberOf numberOf) {
    std::string all;
    for (const char* const text : texts) {
        const auto number = numberOf(KxString(text));
        all += (number ? std::to_string(*number) : "-") + " ";
    }
    return all;
}

/** Expects that the setter makes one line of the other, takes or refuses the empty text, and takes no line end. */
template <class H, class Text>
void expectSet(void (H::*set)(Text), const std::string& line, const std::string& changed, const std::string& missing) {
    const auto header = readAs<H>(line);
    (header.get()->*set)("ab"s);
    EXPECT_EQ(linesOf(*header), changed);
    EXPECT_EQ(outcomeOf([&] { (header.get()->*set)("c\n"); }), "KxSipParseError: Text contains CR, LF or NUL");
    EXPECT_EQ(linesOf(*header), changed);
    const std::string error = missing.empty() ? "" : "KxSipParseError: Text is missing: " + missing;
    EXPECT_EQ(outcomeOf([&] { (header.get()->*set)(nullptr); }), error);
}

} // namespace

TEST(HeaderPartTest, PreferencesInThousandths) {
    KxSipContactHeader contact("<sip:h>");
    EXPECT_EQ(contact.getQValueInThousandths(), 1000U);
    const auto read = [&](const KxString& q) { return contact.setQValue(q), contact.getQValueInThousandths(); };
    EXPECT_EQ(numbersOf({"0", "1", "0.", "1.", "0.125", "1.000"}, read), "0 1000 0 1000 125 1000 ");
    EXPECT_EQ(numbersOf({"", ".", "..", ".5", "00", "2", "0,5", "1.001", "0.5000"}, read), "- - - - - - - - - ");
    for (std::uint32_t q = 0; q <= 1000; ++q) {
        contact.setQValueInThousandths(q);
        EXPECT_EQ(contact.getQValueInThousandths(), q);
        EXPECT_TRUE(q % 1000 == 0 || contact.getQValue()[contact.getQValue().length() - 1] != '0') << q;
    }
    EXPECT_EQ(outcomeOf([&] { contact.setQValueInThousandths(1001); }), "KxSipParseError: Invalid q value");
    const auto kept = readAs<KxSipAcceptHeader>("Accept: sdp");
    EXPECT_FALSE(kept->getQValueInThousandths());
    kept->setQValueInThousandths(1);
    kept->setMediaType("a", "b"s);
    EXPECT_EQ(linesOf(*kept), "Accept: a/b;q=0.001");
}

TEST(HeaderPartTest, MediaRangesMatchTypes) {
    const std::tuple<std::string, std::string, bool> rows[] = {
        {"application/sdp", "Application/SDP", true},
        {"text/*", "TEXT/plain;charset=utf-8", true},
        {"text/*", "application/sdp", false},
        {"*/*;q=0", "application/sdp", true},
        {"*/sdp", "application/sdp", false},
        {"sdp", "sdp/sdp", false}, // kept as text
        {"a/b;level=1", "a/b", false},
        {"a/b;level=1;q=1", "a/b;x;Level=1", true},
        {"*/*;level=1", "a/b;level=2", false},
        {"a/b;Q=0.5;level=1", "a/b", true}, // no part of the range
        {"a/b;x=\"Y\"", "a/b;x=y", true},
        {"a/b;x=\"Y\"", "a/b;x=\"y\"", false},
    };
    for (const auto& [range, type, isMatch] : rows) {
        const auto accept = readAs<KxSipAcceptHeader>("Accept: " + range);
        const auto given = readAs<KxSipContentTypeHeader>("Content-Type: " + type);
        EXPECT_EQ(accept->matches(*given), isMatch) << range << " " << type;
        const bool isPlain = given->getParameters()->empty();
        EXPECT_EQ(accept->matches(given->getType(), given->getSubType()), isPlain ? isMatch : range == "text/*");
        EXPECT_FALSE(accept->matches("", nullptr) || given->isMediaType("", ""));
    }
    EXPECT_TRUE(KxSipContentTypeHeader("text", "Plain").isMediaType("Text"s, "plain"));
}

TEST(HeaderPartTest, TimesAreNumbers) {
    const auto header = KxSipTimestampHeader::sOfMicroseconds(10'500'000);
    const auto read = [&](const KxString& delay) { return header->setDelay(delay), header->getDelayInMicroseconds(); };
    EXPECT_EQ(numbersOf({"54.", ".5", "0.0000019", "18446744073709.551614", "18446744073709.551616"}, read),
              "54000000 500000 1 18446744073709551614 18446744073709551615 ");
    EXPECT_EQ(numbersOf({"", ".", "1.2.3", "1x", "-1"}, read), "- - - - - ");
    header->setDelayInMicroseconds(0);
    EXPECT_EQ(linesOf(*header), "Timestamp: 10.5 0");
    header->setTimestampInMicroseconds(UINT64_MAX);
    header->setDelayInMicroseconds(1);
    EXPECT_EQ(linesOf(*header), "Timestamp: 18446744073709.551615 0.000001");
    EXPECT_EQ(header->getTimestampInMicroseconds(), UINT64_MAX);

    KxSipRetryAfterHeader retry(5);
    const auto seconds = [&](const KxString& text) { return retry.setDuration(text), retry.getDurationInSeconds(); };
    EXPECT_EQ(numbersOf({nullptr, "", "060", "4294967296", "1.5", "1.", "\"6\""}, seconds), "- - 60 4294967295 - - - ");
    retry.setDurationInSeconds(4294967295);
    EXPECT_EQ(linesOf(retry), "Retry-After: 5;duration=4294967295");
    KxSipExpiresHeader expires("Sat, 13 Nov 2010 23:29:00 GMT");
    const KxDate date = expires.getDate();
    expires.setDeltaSeconds(60);
    EXPECT_EQ(joined(linesOf(expires), expires.isSipDate(), expires.getDate().getSeconds()), "Expires: 60|0|0");
    expires.setDate(date);
    EXPECT_EQ(joined(linesOf(expires), expires.getDeltaSeconds()), "Expires: Sat, 13 Nov 2010 23:29:00 GMT|0");
}

TEST(HeaderPartTest, WordsAndFlags) {
    const auto priority = readAs<KxSipPriorityHeader>("Priority: EMERGENCY");
    EXPECT_TRUE(priority->isEmergency() && !priority->isPriority("urgent"));
    EXPECT_FALSE(readAs<KxSipPriorityHeader>("Priority: \"emergency\"")->isPriority(""));
    const auto isRequired = [](const std::string& value) {
        return readAs<KxSipContentDispositionHeader>("Content-Disposition: " + value)->isHandlingRequired();
    };
    EXPECT_TRUE(isRequired("render") && isRequired("x;handling=other") && !isRequired("x;Handling=OPTIONAL"));
    KxSipReplacesHeader replaces("a", "b", "c");
    replaces.setEarlyOnly(true);
    EXPECT_EQ(joined(linesOf(replaces), replaces.isEarlyOnly()), "Replaces: a;from-tag=b;to-tag=c;early-only|1");
    replaces.setEarlyOnly(false);
    EXPECT_EQ(joined(linesOf(replaces), replaces.isEarlyOnly()), "Replaces: a;from-tag=b;to-tag=c|0");
}

TEST(HeaderPartTest, SettersReplaceTheValueOnly) {
    expectSet(&KxSipAcceptLanguageHeader::setLanguage, "Accept-Language: x;q=1", "Accept-Language: ab;q=1",
              "Accept-Language");
    expectSet(&KxSipRequireHeader::setOptionTag, "Require: x, y", "Require: ab & Require: y", "");
    expectSet(&KxSipPriorityHeader::setPriority, "Priority: \"x\"", "Priority: ab", "Priority");
    expectSet(&KxSipCallIdHeader::setCallId, "i: x", "i: ab", "Call-ID");
    expectSet(&KxSipSubjectHeader::setSubject, "s: x", "s: ab", "");
    expectSet(&KxSipUnknownHeader::setValue, "X-Y: x", "X-Y: ab", "");
    expectSet(&KxSipWarningHeader::setAgent, "Warning: 1 h \"x\"", "Warning: 1 ab \"x\"", "");
    expectSet(&KxSipWarningHeader::setText, "Warning: 1 h \"x\"", "Warning: 1 h \"ab\"", "");
    expectSet(&KxSipRAckHeader::setMethod, "RAck: 1 2 X", "RAck: 1 2 ab", "method");
    expectSet(&KxSipTimestampHeader::setTimestamp, "Timestamp: 1 2", "Timestamp: ab 2", "Timestamp");
    expectSet(&KxSipAuthenticationInfoHeader::setNextnonce, "Authentication-Info: nextnonce=\"x\"",
              linesOf(KxSipAuthenticationInfoHeader("nextnonce=\"ab\"")), "nextnonce");
    // a new URI or address replaces what was no URI, and takes part in nothing else
    const auto address = KxMake<KxSipNameAddress>("Bob", KxHandle<KxURI>(KxMake<KxSipURL>("sip:h")));
    const auto alert = readAs<KxSipAlertInfoHeader>("Alert-Info: ring");
    alert->setURI(address->getURI());
    const auto contact = readAs<KxSipContactHeader>("Contact: *");
    contact->setNameAddress(address);
    address->getURL()->setHost("other");
    EXPECT_EQ(linesOf(*alert) + linesOf(*contact), "Alert-Info: <sip:h>Contact: Bob <sip:h>");
}
