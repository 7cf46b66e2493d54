#include "sipheaders/KxSipPAssociatedURIHeader.h"
#include "sipheaders/KxSipPCalledPartyIDHeader.h"
#include "sipheaders/KxSipPPreferredIdentityHeader.h"
#include "sipheaders/KxSipRemotePartyIDHeader.h"
#include "sipheaders/KxSipReplyToHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

/** Addresses of every kind, in one line of a list or in a line each. */
template <class H>
void expectAddresses(bool isList) {
    const std::string name = std::string(H::sToken.view()) + ": ";
    const auto fields = [](const H& header) {
        const auto url = header.getURL();
        return joined(header.getDisplayText(), url.isNil() ? KxString("-") : url->getHost(), header.getParameter("x"));
    };
    const std::vector<std::pair<std::string, std::string>> values{
        {"\"Bell, \\\"A\\\"\" <sip:a@[2001:db8::1]:5061;lr> ;x=\",\"", "Bell, \"A\"|2001:db8::1|\",\""},
        {"<sips:h?Reason=SIP%3Bcause%3D302&Privacy=history>", "|h|"},
        {"tel:+1;x", "|-|"}};
    HeaderRow list{name, "", ""};
    for (const auto& [value, expected] : values) {
        list.line += (list.fields.empty() ? "" : " , ") + value;
        list.written += (list.written.empty() ? "" : " & ") + name + value;
        list.fields += (list.fields.empty() ? "" : " & ") + expected;
        expectRow<H>({name + value, expected}, fields);
    }
    if (!isList) {
        list.written = "KxSipParseError: SIP Header parse error : text after the value";
    }
    expectRow<H>(list, fields);
    const char* const why = isList ? "URL not specified" : "Invalid Character (,) in name-addr";
    expectRow<H>({name + "Bell, A <sip:h>", "", std::string("KxSipParseError: ") + why}, fields);
}

} // namespace

TEST(AddressFieldHeaderTest, Reads) {
    expectAddresses<KxSipPAssociatedURIHeader>(true);
    expectAddresses<KxSipPCalledPartyIDHeader>(false);
    expectAddresses<KxSipPPreferredIdentityHeader>(true);
    expectAddresses<KxSipRemotePartyIDHeader>(true);
    expectAddresses<KxSipReplyToHeader>(false);
}

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
