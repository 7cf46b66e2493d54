#include "sipheaders/KxSipRemotePartyIDHeader.h"
#include "sipheaders/KxSipReplyToHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

TEST(AddressFieldHeaderTest, AnotherAddressIsWritten) {
    const auto header = readAs<KxSipReplyToHeader>("Reply-To: sip:a@h ;x");
    const auto address = KxMake<KxSipNameAddress>(KxSipText("Bob <sips:b@h>"));
    header->setNameAddress(address);
    address->parse("<sip:c>");
    EXPECT_EQ(linesOf(*header), "Reply-To: Bob <sips:b@h>;x");
}

TEST(RemotePartyIDHeaderTest, Reads) {
    expectRows<KxSipRemotePartyIDHeader>(
        [](const KxSipRemotePartyIDHeader& header) {
            return joined(header.getParty(), header.getIDType(), header.getPrivacy(), header.isParty("Calling"),
                          header.isPrivate(), header.isScreened());
        },
        {
            {"Remote-Party-ID: \"A, B\" <sip:a@h>; Party=calling;id-type=\"subscriber\";privacy=Full;screen=YES",
             "calling|subscriber|Full|1|1|1"},
            {"Remote-Party-ID: <sip:a@h>;party=called;privacy=off-network;screen=no, <tel:+1>;privacy=name-network",
             "called||off-network|0|0|0 & ||name-network|0|1|0",
             "Remote-Party-ID: <sip:a@h>;party=called;privacy=off-network;screen=no & Remote-Party-ID: "
             "<tel:+1>;privacy=name-network"},
        });
    const auto built = KxMake<KxSipRemotePartyIDHeader>(KxMake<KxSipNameAddress>(KxSipText("A <sip:a@h>")));
    built->setParty("calling");
    built->setIDType("user");
    built->setPrivacy("full");
    built->setScreened(true);
    EXPECT_EQ(linesOf(*built), "Remote-Party-ID: A <sip:a@h>;party=calling;id-type=user;privacy=full;screen=yes");
    built->setScreened(false);
    EXPECT_FALSE(built->isScreened());
}
