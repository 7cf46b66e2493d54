// Headers that a host builds are written as those that were read, and are read again as the same class.

#include "sipobject/address/KxTelURL.h"
#include "tests/sipobject/support/HeaderSupport.h"

/** These have no assignment: it would share what the object owns. */
template <class... Objects>
constexpr bool kAssignable = (std::is_copy_assignable_v<Objects> || ...);
static_assert(!kAssignable<KxSipHeader, KxSipContactHeader, KxSipUnknownHeader, KxSipWWWAuthenticateHeader, KxURI,
                           KxSipURL, KxTelURL, KxSipNameAddress, KxSipChallengeInfo, KxSipCredentialsInfo>);

TEST(BuiltHeaderTest, AreWrittenAndReadAsOthers) {
    using Made = KxHandle<KxSipHeader>;
    const auto uri = KxMake<KxTelURL>("tel:+1");
    const auto address = KxMake<KxSipNameAddress>("Bob", KxHandle<KxURI>(KxMake<KxSipURL>("sip:h;lr")));
    const auto parameters = KxMake<KxParameters>();
    parameters->setValue("x", KxString("1"));
    const auto session = KxMake<KxSipSessionExpiresHeader>(1800U);
    session->setRefresher("uas");
    const std::pair<Made, const char*> rows[] = {
        {KxMake<KxSipAcceptEncodingHeader>("gzip"), "Accept-Encoding: gzip"},
        {KxMake<KxSipAcceptHeader>("applxcation", "plain"), "Accept: applxcation/plain"}, // almost a well-known word
        {KxMake<KxSipAcceptLanguageHeader>("da"), "Accept-Language: da"},
        {KxMake<KxSipAlertInfoHeader>(KxHandle<KxURI>(uri)), "Alert-Info: <tel:+1>"},
        {KxMake<KxSipAlertInfoHeader>("<sip:h>;x"), "Alert-Info: <sip:h>;x"},
        {KxMake<KxSipAllowEventsHeader>("presence"), "Allow-Events: presence"},
        {KxMake<KxSipCCDiversionHeader>(address), "CC-Diversion: Bob <sip:h;lr>"},
        {KxMake<KxSipCCDiversionHeader>("sip:h;reason=busy"), "CC-Diversion: <sip:h>;reason=busy"},
        {KxMake<KxSipContentDispositionHeader>("session"), "Content-Disposition: session"},
        {KxMake<KxSipContentEncodingHeader>("gzip"), "Content-Encoding: gzip"},
        {KxMake<KxSipDateHeader>(KxDate("Sat, 13 Nov 2010 23:29:00 GMT")), "Date: Sat, 13 Nov 2010 23:29:00 GMT"},
        {KxMake<KxSipErrorInfoHeader>("<sip:h>"), "Error-Info: <sip:h>"},
        {Made(new KxSipExpiresHeader(0)), "Expires: 0"}, // seconds, and no null text
        {KxMake<KxSipInReplyToHeader>("1@h"), "In-Reply-To: 1@h"},
        {KxMake<KxSipMIMEVersionHeader>(1U, 2U), "MIME-Version: 1.2"},
        {KxMake<KxSipMaxForwardsHeader>(70U), "Max-Forwards: 70"},
        {KxMake<KxSipMinExpiresHeader>(60U), "Min-Expires: 60"},
        {KxMake<KxSipMinSEHeader>(90U), "Min-SE: 90"},
        {KxMake<KxSipOrganizationHeader>("The, firm"), "Organization: The, firm"},
        {KxMake<KxSipPriorityHeader>("urgent"), "Priority: urgent"},
        {KxMake<KxSipProxyRequireHeader>("foo"), "Proxy-Require: foo"},
        {KxMake<KxSipRAckHeader>(1U, 2U, "INVITE"), "RAck: 1 2 INVITE"},
        {KxMake<KxSipRSeqHeader>(3U), "RSeq: 3"},
        {KxMake<KxSipRecordRouteHeader>(address), "Record-Route: Bob <sip:h;lr>"},
        {KxMake<KxSipRecordRouteHeader>("<sip:h;lr>"), "Record-Route: <sip:h;lr>"},
        {KxMake<KxSipReferToHeader>(KxHandle<KxURI>(uri)), "Refer-To: tel:+1"},
        {KxMake<KxSipReferToHeader>("Bob <sip:h>"), "Refer-To: sip:h"},
        {KxMake<KxSipReferredByHeader>(address, parameters), "Referred-By: Bob <sip:h;lr>;x=1"},
        {KxMake<KxSipReferredByHeader>(address->getURL(), parameters), "Referred-By: <sip:h;lr>;x=1"},
        {KxMake<KxSipReferredByHeader>("sip:h;cid=1"), "Referred-By: <sip:h>;cid=1"},
        {KxMake<KxSipResponseKeyHeader>("pgp"), "Response-Key: pgp"},
        {KxMake<KxSipRetryAfterHeader>(5U, "soon"), "Retry-After: 5 (soon)"},
        {KxMake<KxSipRouteHeader>(address), "Route: Bob <sip:h;lr>"},
        {KxMake<KxSipServerHeader>("S/1"), "Server: S/1"},
        {session, "Session-Expires: 1800;refresher=uas"},
        {KxMake<KxSipSessionHeader>("media"), "Session: media"},
        {KxMake<KxSipUnsupportedHeader>("foo"), "Unsupported: foo"},
        {KxMake<KxSipUserAgentHeader>("U/1 (x)"), "User-Agent: U/1 (x)"},
    };
    uri->parse("tel:2"); // the headers have copies
    address->getURL()->clearParameters();
    parameters->clear();
    for (const auto& [header, line] : rows) {
        EXPECT_EQ(linesOf(*header), line);
        const Made again = readHeader(line);
        EXPECT_EQ(className(*again), className(*header)) << line;
        EXPECT_EQ(again->getHeaderID(), header->getHeaderID()) << line;
        EXPECT_EQ(linesOf(*again), line);
    }
}

TEST(BuiltHeaderTest, NilIsWrittenAsNothing) {
    EXPECT_EQ(KxSipMaxForwardsHeader::sGetExpandedToken(), "Max-Forwards");
    const KxHandle<KxSipNameAddress> nobody;
    const KxHandle<KxURI> nothing;
    EXPECT_EQ(linesOf(*KxMake<KxSipRouteHeader>(nobody)), "Route: <:>");
    EXPECT_EQ(linesOf(*KxMake<KxSipRecordRouteHeader>(nobody)), "Record-Route: <:>");
    EXPECT_EQ(linesOf(*KxMake<KxSipCCDiversionHeader>(nobody)), "CC-Diversion: <:>");
    EXPECT_EQ(linesOf(*KxMake<KxSipReferredByHeader>(nobody, KxHandle<KxParameters>())), "Referred-By: <:>");
    EXPECT_EQ(linesOf(*KxMake<KxSipReferToHeader>(nothing)), "Refer-To: ");
    EXPECT_EQ(linesOf(*KxMake<KxSipAlertInfoHeader>(nothing)), "Alert-Info: <>");
}
