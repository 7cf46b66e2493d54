// Header lines: folds, empty values and elements, names, and what is kept as text.

#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipCallInfoHeader.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "sipobject/headers/KxSipReferToHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "sipobject/headers/KxSipUnreadHeader.h"
#include "sipobject/messages/KxSipReading.h"
#include "tests/sipobject/support/MessageSupport.h"

#include <chrono>

namespace {

std::string requestWith(const std::string& lines) {
    return "OPTIONS sip:b SIP/2.0\r\n" + requiredHeaders("OPTIONS") + lines + "\r\n\r\n";
}

/** The values that are not required, one after the other. Those of no class have a "?" before them, the others the first
    letters of it. */
std::string valuesOf(const KxSipMessage& message) {
    std::string values;
    for (const HeaderID id : message.getHeaderOrder()) {
        for (const KxSipHeader* value = message.getHeaderByID(id).get(); value; value = value->getNext().get()) {
            const bool isUnread = dynamic_cast<const KxSipUnreadHeader*>(value) != nullptr;
            values += id <= KxHeaderIDs::kContentLength ? "" : (isUnread ? " | ?" : " | ") + escaped(lineOf(*value));
        }
    }
    return values;
}

/** The status of a message with these lines, its values, and the reports of its lines; or the error. What is written must
    be read again with the same values. */
std::string read(const std::string& lines) {
    const std::string text = requestWith(lines);
    const KxSipReading reading = KxSipReading::sRead(text);
    std::string reports;
    for (const KxSipReading::DroppedLine& line : reading.dropped) {
        reports += " @" + std::to_string(line.line) + ' ' + line.why();
    }
    if (reading.message.isNil()) {
        return std::string(reading.errorText.view()) + reports;
    }
    const std::string again = written(*reading.message);
    const KxHandle<KxSipMessage> second = readMessage(again);
    EXPECT_EQ(written(*second), again);
    EXPECT_EQ(valuesOf(*second), valuesOf(*reading.message)) << lines;
    return std::to_string(reading.message->getStatus()) + valuesOf(*reading.message) + reports;
}

const std::string kEmpty = "SIP Header parse error : nothing after the colon";
const std::string kRest = "SIP Header parse error : text after the value";

} // namespace

TEST(RFCLineTest, Lines) {
    const std::pair<std::string, std::string> rows[] = {
        // folds
        {"Subject: a\r\n b", "0 | Subject: a b"},
        {"Subject: a \t\r\n\t  b\r\n \r\n c\r\n ", "0 | Subject: a b c"},
        {"Subject:\r\n a", "0 | Subject: a"},
        {"Allow\r\n : INVITE,\r\n ACK", "0 | Allow: INVITE | Allow: ACK"},
        // empty values
        {"Supported:", "0 | ?Supported: "},
        {"k: , ,", "0 | ?k: , ,"},
        {"Accept:\r\nAccept-Encoding:\r\nAccept-Language: \r\nAllow:",
         "0 | ?Accept:  | ?Accept-Encoding:  | ?Accept-Language:  | ?Allow: "},
        {"Organization:\r\ns: \t\r\nX-A:", "0 | Organization:  | s:  | X-A: "},
        {"Contact:", "1 | ?Contact:  @7 " + kEmpty},
        {"Require:", kEmpty + " @7 " + kEmpty},
        {"Response-Key: pgp\r\nResponse-Key: pgp a=\"1,2\" ;b , c\r\nResponse-Key: p b=1,a=2,b=\"a;=",
         "1 | Response-Key: pgp | Response-Key: pgp a=\"1,2\",b,c | ?Response-Key: p b=1,a=2,b=\"a;= @9 Invalid "
         "Response-Key header"},
        // empty elements
        {"Allow: ,INVITE,, ACK ,", "0 | Allow: INVITE | Allow: ACK"},
        {"k: timer,, 100rel,", "0 | k: timer | Supported: 100rel"},
        {"Require: a,,b", "0 | Require: a | Require: b"},
        {"Contact: ,<sip:a>;x=\"1,2\",,<sip:b>", "0 | Contact: <sip:a>;x=\"1,2\" | Contact: <sip:b>"},
        {"Accept: a/b,, c/d", "0 | Accept: a/b | Accept: c/d"},
        {"Alert-Info: <sip:a>, ,<sip:b>", "0 | Alert-Info: <sip:a> | Alert-Info: <sip:b>"},
        // what can't be read is kept, each value
        {"m: <sip:a>, sip:@b, <sip:b>", "1 | m: <sip:a> | ?Contact: sip:@b | Contact: <sip:b> @7 "},
        {"m: >;a, >\"x,y\" ,, >, <sip:b>,>", "1 | ?m: >;a, >\"x,y\" ,, > | Contact: <sip:b> | ?Contact: > @7 "},
        {"Contact: <sip:a>, \"b, <sip:c>", "1 | Contact: <sip:a> | ?Contact: \"b, <sip:c> @7 "},
        {"Allow: INVITE x, ACK", "1 | ?Allow: INVITE x | Allow: ACK @7 " + kRest},
        {"Content-Type: x\r\n y", "1 | ?Content-Type: x y @7 "},
        {"Accept: <a , \"b", "1 | Accept: <a | Accept: \"b @7 Invalid Accept header"},
        {"Alert-Info: a, <sip:b>", "1 | Alert-Info: a | Alert-Info: <sip:b> @7 Invalid Alert-Info header"},
        {"Event: a, b", "1 | ?Event: a, b @7 " + kRest},
        {"no colon\r\n: x\r\nSubject: s",
         "1 | Subject: s @7 SIP Header parse error : no colon found @8 Header token expected"},
        {"Route: <sip:a>,\r\n >\r\nDate: x", "Invalid Name-Address in KxSipRouteHeader @7 Invalid Name-Address in "
                                             "KxSipRouteHeader @9 Invalid Date header"},
        {"Via: SIP/2.0/UDP a, b", "Invalid Via header"},
        {"Max-Forwards: 1\r\nMax-Forwards: 1", "multiple Max-Forwards headers detected"},
        {"Subject: a\r\ns: b", "1 | Subject: a | s: b @8 SIP Header parse error : header repeated"},
        // numbers and dates
        {"Expires: 4294967295\r\nMin-Expires: 0", "0 | Expires: 4294967295 | Min-Expires: 0"},
        {"Expires: 4294967296", "1 | ?Expires: 4294967296 @7 Invalid Expires header"},
        {"Expires: Thu, 01 Dec 1994 16:00:00 GMT",
         "1 | ?Expires: Thu, 01 Dec 1994 16:00:00 GMT @7 Invalid Expires header"},
        {"Min-Expires: 6x", "1 | ?Min-Expires: 6x @7 Invalid Minimum SE header"},
        {"x: 90;refresher=uac\r\nMin-SE: -1", "1 | x: 90;refresher=uac | ?Min-SE: -1 @8 Invalid Minimum SE header"},
        {"Retry-After: 120(in (or near) a meeting);duration=60\r\nRSeq: x",
         "1 | Retry-After: 120 (in (or near) a meeting);duration=60 | ?RSeq: x @8 Invalid RSeq header"},
        {"Retry-After: 5 (", "1 | Retry-After: 5 ( @7 Invalid Retry-After header"},
        {"Retry-After: soon, or not", "1 | Retry-After: soon, or not @7 Invalid Retry-After header"},
        {"RAck: 1 x INVITE\r\nTimestamp: 5.4 0.1 x",
         "1 | ?RAck: 1 x INVITE | ?Timestamp: 5.4 0.1 x @7 Invalid RAck header @8 " + kRest},
        {"Date: sat, 13 Nov 2010 23:29:00 GMT ", "0 | Date: Sat, 13 Nov 2010 23:29:00 GMT"},
        {"Date: Sun, 13 Nov 2010 23:29:00 GMT", "1 | ?Date: Sun, 13 Nov 2010 23:29:00 GMT @7 Invalid Date header"},
        {"Date: Fri, 01 Jan 2010 16:00:00 EST", "1 | ?Date: Fri, 01 Jan 2010 16:00:00 EST @7 Invalid Date header"},
        // names
        {"o: a\r\nu: b, c\r\nb: <sip:d>", "0 | o: a | u: b | Allow-Events: c | b: <sip:d>"},
        {"call-info: <http://a>;purpose=icon, <http://b>",
         "0 | call-info: <http://a>;purpose=icon | Call-Info: <http://b>"},
        {"a: *\r\nD: x\r\nn:y", "0 | a: * | D: x | n: y"},
    };
    for (const auto& [lines, expected] : rows) {
        EXPECT_THAT(read(lines), testing::StartsWith(expected)) << lines;
    }
}

TEST(RFCLineTest, TypedAccessSkipsWhatIsKept) {
    const auto message = readMessage(requestWith("m: >, <sip:a>, ;;\r\nContact: <sip:b>\r\nk: \r\nc: x\r\nDate: x"));
    EXPECT_EQ(message->getContactHeader()->getURL()->getHost(), "a");
    EXPECT_EQ(std::distance(message->values<KxSipContactHeader>().begin(), {}), 2);
    EXPECT_EQ(std::distance(message->valuesNamed("M").begin(), {}), 4);
    EXPECT_TRUE(message->getSupportedHeader().isNil());
    EXPECT_FALSE(message->isSupported("") || message->lists<KxSipSupportedHeader>(""));
    EXPECT_TRUE(message->hasNamed("supported"));
    EXPECT_TRUE(message->getContentTypeHeader().isNil());
    message->setBody("v", "a/b", 1);
    EXPECT_EQ(message->getContentTypeHeader()->getNext().isNil(), message->getBodyType() == "a/b");
    const KxHandle<KxSipHeader> date(static_cast<KxSipHeader*>(message->getHeader("date")->clone()));
    EXPECT_EQ(joined(date->getExpandedToken(), date->getHeaderID(), lineOf(*date)), "Date|19|Date: x");
    EXPECT_EQ(message->removeAllNamed("contact"), 4U);
    EXPECT_FALSE(message->hasNamed("Contact"));
}

TEST(RFCLineTest, NamesAreFoundInAnySpelling) {
    const auto message = readMessage(requestWith("k: Timer\r\nr: <sip:c>\r\nX-Floor: 2\r\na: 1\r\nAccept-Contact: 2"));
    for (const char* const name : {"Supported", "K", "refer-to", "R", "x-floor", "Accept-Contact", "A", "via", "V"}) {
        EXPECT_FALSE(message->getHeader(name).isNil()) << name;
        EXPECT_TRUE(message->hasNamed(name)) << name;
    }
    EXPECT_TRUE(message->getHeader("y").isNil());
    EXPECT_TRUE(message->isSupported("TIMER"));
    EXPECT_EQ(message->first<KxSipReferToHeader>()->getCompactToken(), "r");
    EXPECT_EQ(message->mTokenToID("Refer-To"), KxHeaderIDs::kReferTo);
    EXPECT_EQ(std::distance(message->valuesNamed("accept-contact").begin(), {}), 2);
    EXPECT_TRUE(message->removeHeader("Accept-Contact"));
    EXPECT_EQ(message->removeAllNamed("a"), 1U);
    EXPECT_TRUE(message->removeHeader("Supported"));
    EXPECT_FALSE(message->removeHeader("k"));
    for (int i = 0; i < 30; ++i) { // enough for the index of names
        message->addHeader(KxMake<KxSipUnknownHeader>(i % 3 == 0 ? "Y" : i % 3 == 1 ? "Identity" : "Z", "1"), false);
    }
    EXPECT_EQ(std::distance(message->valuesNamed("identity").begin(), {}), 20);
    EXPECT_EQ(message->removeAllNamed("y"), 20U);
    EXPECT_EQ(KxSipHeader::sNames().size(), 69U);
}

/** The time for one of so many values. */
static double timeFor(const std::string& value, std::size_t count) {
    std::string values;
    for (std::size_t i = 0; i < count; ++i) {
        values += value;
    }
    const std::string text = requestWith("Contact: <sip:a>" + values + "\r\nSubject: s");
    const auto start = std::chrono::steady_clock::now();
    const KxHandle<KxSipMessage> message = readMessage(text);
    while (!message->getContactHeader().isNil()) {
        message->removeHeader("Contact");
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_FALSE(message->getHeader("s").isNil());
    return taken.count() / static_cast<double>(count);
}

TEST(RFCLineTest, ManyBadValuesTakeTimeInProportion) {
    std::string lines = "Subject: s";
    for (int i = 0; i < 1000; ++i) {
        lines += "\r\nDate: x";
    }
    EXPECT_EQ(readMessage(requestWith(lines))->getStatus(), 1);
    EXPECT_EQ(outcomeOf([&] { readMessage(requestWith(lines + "\r\nContact: >")); }),
              "KxSipParseError: Too many header lines can't be read");
    const std::size_t many = 100000 / kShrink;
    for (const char* const value :
         {",", ",>", ",>,<sip:b>", ",\"", ",<", ",a@b;;>", ",<sip:b>>", ",<sip:b>;\"x,y", ", , "}) {
        timeFor(value, many / 100);
        EXPECT_LT(timeFor(value, many), 40 * timeFor(value, many / 100) + 1e-6) << value;
    }
}
