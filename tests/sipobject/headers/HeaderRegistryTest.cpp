#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "tests/core/LogCapture.h"
#include "tests/sipobject/support/HeaderSupport.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <set>

using namespace KxHeaderIDs;

namespace {

struct NameRow {
    const char* name;
    const char* compact; ///< Null where there is none.
    const char* className;
    HeaderID id;
    const char* value;
};

constexpr const char* kCredentials =
    R"(Digest username="a",realm="b",nonce="c",response="d",uri="sip:a",algorithm=MD5)";

constexpr NameRow kRows[] = {
    {"Accept", nullptr, "KxSipAcceptHeader", kAccept, "a/b"},
    {"Accept-Encoding", nullptr, "KxSipAcceptEncodingHeader", kAcceptEncoding, "a"},
    {"Accept-Language", nullptr, "KxSipAcceptLanguageHeader", kAcceptLanguage, "a"},
    {"Alert-Info", nullptr, "KxSipAlertInfoHeader", kAlertInfo, "<sip:a>"},
    {"Allow", nullptr, "KxSipAllowHeader", 11, "A"},
    {"Allow-Events", nullptr, "KxSipAllowEventsHeader", 12, "a"},
    {"Authentication-Info", nullptr, "KxSipAuthenticationInfoHeader", 14, "nextnonce=\"a\""},
    {"Authorization", nullptr, "KxSipAuthorizationHeader", 15, kCredentials},
    {"CC-Diversion", nullptr, "KxSipCCDiversionHeader", kCCDiversion, "<sip:a>"},
    {"CSeq", nullptr, "KxSipCSeqHeader", 4, "1 A"},
    {"Call-ID", "i", "KxSipCallIdHeader", 5, "a"},
    {"Contact", "m", "KxSipContactHeader", 18, "*"},
    {"Content-Disposition", nullptr, "KxSipContentDispositionHeader", kContentDisposition, "a"},
    {"Content-Encoding", "e", "KxSipContentEncodingHeader", 20, "a"},
    {"Content-Length", "l", "KxSipContentLengthHeader", 6, "0"},
    {"Content-Type", "c", "KxSipContentTypeHeader", 21, "a/b"},
    {"Date", nullptr, "KxSipDateHeader", kDate, "Thu, 01 Dec 1994 16:00:00 GMT"},
    {"Error-Info", nullptr, "KxSipErrorInfoHeader", kErrorInfo, "<sip:a>"},
    {"Event", nullptr, "KxSipEventHeader", kEvent, "a"},
    {"Expires", nullptr, "KxSipExpiresHeader", 26, "1"},
    {"From", "f", "KxSipFromHeader", 2, "<sip:a>"},
    {"In-Reply-To", nullptr, "KxSipInReplyToHeader", kInReplyTo, "a"},
    {"MIME-Version", nullptr, "KxSipMIMEVersionHeader", kMIMEVersion, "1.0"},
    {"Max-Forwards", nullptr, "KxSipMaxForwardsHeader", 29, "1"},
    {"Min-Expires", nullptr, "KxSipMinExpiresHeader", 31, "1"},
    {"Min-SE", nullptr, "KxSipMinSEHeader", 32, "1"},
    {"Organization", nullptr, "KxSipOrganizationHeader", kOrganization, "a, b"},
    {"Priority", nullptr, "KxSipPriorityHeader", kPriority, "a"},
    {"Proxy-Authenticate", nullptr, "KxSipProxyAuthenticateHeader", 35, "Digest realm=\"a\""},
    {"Proxy-Authorization", nullptr, "KxSipProxyAuthorizationHeader", 36, kCredentials},
    {"Proxy-Require", nullptr, "KxSipProxyRequireHeader", 37, "a"},
    {"RAck", nullptr, "KxSipRAckHeader", 38, "1 1 A"},
    {"RSeq", nullptr, "KxSipRSeqHeader", 39, "1"},
    {"Record-Route", nullptr, "KxSipRecordRouteHeader", kRecordRoute, "<sip:a>"},
    {"Refer-To", nullptr, "KxSipReferToHeader", kReferTo, "sip:a"},
    {"Referred-By", nullptr, "KxSipReferredByHeader", kReferredBy, "<sip:a>"},
    {"Replaces", nullptr, "KxSipReplacesHeader", 43, "a;to-tag=1;from-tag=2"},
    {"Require", nullptr, "KxSipRequireHeader", 44, "a"},
    {"Response-Key", nullptr, "KxSipResponseKeyHeader", kResponseKey, "a b=c,d"},
    {"Retry-After", nullptr, "KxSipRetryAfterHeader", kRetryAfter, "1"},
    {"Route", nullptr, "KxSipRouteHeader", kRoute, "<sip:a>"},
    {"Server", nullptr, "KxSipServerHeader", kServer, "a, b"},
    {"Session", nullptr, "KxSipSessionHeader", kSession, "a"},
    {"Session-Expires", "x", "KxSipSessionExpiresHeader", 49, "1"},
    {"Subject", "s", "KxSipSubjectHeader", 51, "a, b"},
    {"Supported", "k", "KxSipSupportedHeader", 53, "a"},
    {"Timestamp", nullptr, "KxSipTimestampHeader", kTimestamp, "1"},
    {"To", "t", "KxSipToHeader", 3, "<sip:a>"},
    {"Unsupported", nullptr, "KxSipUnsupportedHeader", 56, "a"},
    {"User-Agent", nullptr, "KxSipUserAgentHeader", kUserAgent, "a, b"},
    {"Via", "v", "KxSipViaHeader", 1, "SIP/2.0/UDP a"},
    {"Warning", nullptr, "KxSipWarningHeader", kWarning, "399 a \"b\""},
    {"WWW-Authenticate", nullptr, "KxSipWWWAuthenticateHeader", 58, "Digest realm=\"a\""},
};

/** Letters that are no header's: those of RFC 3261 and its extensions that are not taken here, and all others. */
constexpr std::string_view kFreeLetters = "abdghjnopqruwyz";

std::string withCase(std::string name, char (*letterCase)(char)) {
    std::transform(name.begin(), name.end(), name.begin(), letterCase);
    return name;
}

KxSipHeader* makeRequire() {
    return new KxSipRequireHeader("");
}

KxSipHeader* makeAllow() {
    return new KxSipAllowHeader("");
}

} // namespace

static_assert(std::size(kRows) == 53);
static_assert(std::count_if(std::begin(kRows), std::end(kRows),
                            [](const NameRow& row) { return row.compact != nullptr; }) == 11);

/** Every name is that of its class, and a header of it survives copying, writing and reading again. */
TEST(HeaderRegistryTest, EveryNameInEveryLetterCase) {
    std::set<HeaderID> ids;
    for (const NameRow& row : kRows) {
        EXPECT_TRUE(row.id < kCount && ids.insert(row.id).second) << row.name;
        const std::string names[] = {row.name, row.compact == nullptr ? row.name : row.compact};
        for (const std::string& name : names) {
            std::string mixed = withCase(name, &KxAscii::toUpper);
            mixed.back() = KxAscii::toLower(mixed.back());
            for (const std::string& spelled :
                 {name, mixed, withCase(name, &KxAscii::toLower), withCase(name, &KxAscii::toUpper)}) {
                const std::string line = spelled + ": " + row.value;
                const KxHandle<KxSipHeader> header = readHeader(line + "\r\n");
                EXPECT_EQ(className(*header), row.className) << spelled;
                EXPECT_EQ(header->getHeaderID(), row.id) << spelled;
                EXPECT_EQ(header->getExpandedToken(), row.name);
                EXPECT_EQ(header->getCompactToken(), names[1]);
                EXPECT_EQ(linesOf(*header), line);
                const KxHandle<KxSipHeader> again = readHeader(written(*header));
                EXPECT_EQ(className(*again), row.className) << spelled;
                EXPECT_EQ(linesOf(*again), line);
            }
        }
    }
}

TEST(HeaderRegistryTest, OtherNamesAreKeptWithTheirRawText) {
    std::vector<std::string> names = {
        "Call-Info", "Vi",    "Viaa",         "Content-Typ",    "Content-Lengthy",    "xx",
        "-",         "Via;x", "Contend-Type", "Content-Lxngth", "Proxy-Auxhorization"};
    for (const char letter : kFreeLetters) {
        names.emplace_back(1, letter);
    }
    for (const std::string& name : names) {
        const KxHandle<KxSipUnknownHeader> header = readAs<KxSipUnknownHeader>(name + ": <a>;b=\"c\", d\r\n");
        EXPECT_EQ(header->getHeaderID(), kUnknown);
        EXPECT_EQ(joined({header->getExpandedToken(), header->getCompactToken(), header->getValue()}),
                  joined({name, name, "<a>;b=\"c\", d"}));
    }
    expectRows<KxSipUnknownHeader>(
        [](const auto& header) { return std::string(header.getValue().view()); },
        {
            {"X-Foo: \v\t a, b,\t ", "a, b,\t ", "X-Foo: a, b,\t "},
            {"X-Foo:\xff\x01:", "\xff\x01:", "X-Foo: \xff\x01:"},
            {"X-Foo: " + std::string(99999, ','), std::string(99999, ','), "X-Foo: " + std::string(99999, ',')},
        });
    const KxHandle<KxSipUnknownHeader> empty(new KxSipUnknownHeader("N", static_cast<const char*>(nullptr)));
    EXPECT_EQ(linesOf(*empty), "N: ");
}

TEST(HeaderRegistryTest, TheFirstRegistrationStands) {
    LogCapture capture;
    log4cplus::Logger::getInstance("tandril.kx.KxSipHeader").setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    KxSipHeader::sAddConstructor("X-Kx-Test", &makeRequire);
    EXPECT_EQ(capture.texts(), std::vector<std::string>{"pToken = \"X-Kx-Test\""});
    KxSipHeader::sAddConstructor("x-KX-test", &makeAllow);
    KxSipHeader::sAddConstructor("ALLOW", &makeRequire);
    EXPECT_EQ(linesOf(*readAs<KxSipRequireHeader>("X-kx-tesT: a;b,c\r\n")), "X-kx-tesT: a;b & Require: c");
    EXPECT_EQ(linesOf(*readAs<KxSipAllowHeader>("Allow: a;b\r\n")), "Allow: a");
}
