#include "sipheaders/KxSipDiversionHeader.h"
#include "sipheaders/KxSipGeolocationHeader.h"
#include "sipheaders/KxSipMaxBreadthHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

TEST(DiversionHeaderTest, Reads) {
    expectRows<KxSipDiversionHeader>(
        [](const KxSipDiversionHeader& header) {
            return joined(header.getReason(), header.getCounter().value_or(99), header.getLimit().value_or(99),
                          header.getPrivacy(), header.isPrivate(), header.getScreen(), header.isScreened());
        },
        {
            {"Diversion: <sip:a>;Reason=User-Busy;counter=02;limit=5;privacy=\"full\";screen=YES",
             "User-Busy|2|5|full|1|YES|1"},
            {"Diversion: <sip:a>;counter=-1;limit=4294967296;privacy=Off;screen=no, <tel:+1>",
             "|99|99|Off|0|no|0 & |99|99||0||0",
             "Diversion: <sip:a>;counter=-1;limit=4294967296;privacy=Off;screen=no & Diversion: <tel:+1>"},
        });
    const auto diversion = KxMake<KxSipDiversionHeader>(KxMake<KxSipURL>("sip:a@h"), "my reason");
    diversion->setCounter(2);
    diversion->setLimit(3);
    diversion->setPrivacy("off");
    diversion->setScreen("yes");
    EXPECT_EQ(linesOf(*diversion),
              "Diversion: <sip:a@h>;reason=\"my reason\";counter=2;limit=3;privacy=off;screen=yes");
    EXPECT_TRUE(diversion->isReason("My Reason"));
}

TEST(GeolocationHeaderTest, TellsAReferenceFromAPartOfTheBody) {
    expectRows<KxSipGeolocationHeader>(
        [](const KxSipGeolocationHeader& header) {
            return joined(header.getURI(), header.isByValue(), header.getContentID(), header.getURL().isNil());
        },
        {
            {"Geolocation: <CID:a%20b@h>;x, <pres:u@h>, <https://h/a,b?c>, <sip:u@h>",
             "CID:a%20b@h|1|a%20b@h|1 & pres:u@h|0||1 & https://h/a,b?c|0||1 & sip:u@h|0||0",
             "Geolocation: <CID:a%20b@h>;x & Geolocation: <pres:u@h> & Geolocation: <https://h/a,b?c> & "
             "Geolocation: <sip:u@h>"},
            {"Geolocation: nowhere", "", "KxSipParseError: URL not specified"},
        });
    EXPECT_EQ(linesOf(*KxMake<KxSipGeolocationHeader>(KxMake<KxSipNameAddress>("<cid:x@h>")->getURI())),
              "Geolocation: <cid:x@h>");
    EXPECT_FALSE(KxMake<KxSipGeolocationHeader>(KxHandle<KxURI>())->isByValue());
}

TEST(MaxBreadthHeaderTest, ReadsOneNumber) {
    expectRows<KxSipMaxBreadthHeader, &KxSipMaxBreadthHeader::getMaxBreadth>({
        {"max-breadth:\t0060 ", "60", "max-breadth: 0060"},
        {"Max-Breadth: 4294967296", "", "KxSipParseError: Invalid Max-Breadth header"},
        {"Max-Breadth: 60,1", "", "KxSipParseError: Invalid Max-Breadth header"},
    });
    const auto breadth = KxMake<KxSipMaxBreadthHeader>(60U);
    breadth->setMaxBreadth(59);
    EXPECT_EQ(linesOf(*breadth), "Max-Breadth: 59");
}
