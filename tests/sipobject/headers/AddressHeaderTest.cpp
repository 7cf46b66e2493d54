#include "sipobject/address/KxTelURL.h"
#include "tests/sipobject/support/HeaderSupport.h"

/** Display name|class of the URI|header parameters. */
template <class H>
static std::string addressFields(const H& header) {
    const KxSipNameAddress& address = *header.getNameAddress();
    if (const KxHandle<KxSipURL> url = address.getURL(); !url.isNil()) { // its parts are those of its text
        const auto parts = [](const KxSipURL& of) {
            return joined(of.getUser(), of.getUserPassword(), of.getHost(), of.getPort(), of.getParameters());
        };
        EXPECT_EQ(parts(*url), parts(KxSipURL(url->getString().c_str())));
    }
    return joined(address.getDisplayName(), className(*address.getURI()), header.getParameters());
}

constexpr const char* kOpenQuote = "KxSipParseError: Invalid quote in KxSipNameAddress";
constexpr const char* kTooLong = "KxSipParseError: Invalid SIP Name Address";

static std::string invalid(const std::string& character) {
    return "KxSipParseError: Invalid Character (" + character + ") in name-addr";
}

TEST(AddressHeaderTest, DisplayNames) {
    const std::string longest(1023, 'n');
    const std::string longestQuoted = '"' + std::string(1021, 'q') + '"';
    expectRows<KxSipToHeader, addressFields<KxSipToHeader>>({
        {"To:  Bob  de B. <sip:h>", "Bob  de B.|KxSipURL|", "To: Bob  de B. <sip:h>"},
        {"To: aZ09-.!%*_+`'~<sip:h>", "aZ09-.!%*_+`'~|KxSipURL|", "To: aZ09-.!%*_+`'~ <sip:h>"},
        {"To: \"A \\\"B\\\" <c>:,;@\xff\" <sip:h>", "\"A \\\"B\\\" <c>:,;@\xff\"|KxSipURL|"},
        {"To: a \"b\" c<sip:h>", "a \"b\" c|KxSipURL|", "To: a \"b\" c <sip:h>"},
        {"t: \"\"<sip:h>", "\"\"|KxSipURL|", "t: \"\" <sip:h>"},
        // without brackets there is no display name, and the URI begins with the last quote
        {"To: \"Bob\" sip:h;tag=1", "|KxURI|", "To: <\" sip:h;tag=1>"},
        {"To: B\xf6\x62 <sip:h>", "", invalid("\xf6")},
        {"To: a\tb <sip:h>", "", invalid("\t")},
        {"To: Bob", "", invalid("\r")},
        {"To: \"\\\"", "", kOpenQuote},
        {"To: \"a\\\\\" <sip:h>", "", kOpenQuote}, // a quote after any backslash does not close
        // a blank is written before the "<", which is then one character too many
        {"To: " + longest + "<sip:h>", longest + "|KxSipURL|", "To: " + longest + " <sip:h>", kTooLong},
        {"To: " + longest.substr(1) + " <sip:h>", longest.substr(1) + "|KxSipURL|",
         "To: " + longest.substr(1) + " <sip:h>"},
        {"To: " + longest + " <sip:h>", "", kTooLong},
        {"To: " + longest + "n:h", "", kTooLong},
        {"To: " + longestQuoted + "<sip:h>", longestQuoted + "|KxSipURL|", "To: " + longestQuoted + " <sip:h>",
         kTooLong},
        {"To: \"" + std::string(1023, 'q') + "\"<sip:h>", "", kTooLong},
    });
}

TEST(AddressHeaderTest, FromAndTo) {
    expectRows<KxSipFromHeader, addressFields<KxSipFromHeader>>({
        {"f: sip:h;tag=2", "|KxSipURL|tag=2", "f: <sip:h>;tag=2"},
        {"From: sip:u:p@h:5070;lr;tag=\"a,b;c\"", "|KxSipURL|lr;tag=\"a,b;c\"",
         "From: <sip:u:p@h:5070>;lr;tag=\"a,b;c\""},
        {"From: <sip:h> ;tag=1", "|KxSipURL|tag=1", "From: <sip:h>;tag=1"},
        {"From: <sip:h>;;tag = 1; TAG=\"\\\"\" ;=;x", "|KxSipURL|tag=\"\\\"\";x", "From: <sip:h>;tag=\"\\\"\";x"},
        {"From: <sip:h>tag=1", "|KxSipURL|tag=1", "From: <sip:h>;tag=1"},
        {"From: <sip:h>;tag=1 (c)", "|KxSipURL|tag=1 (c)"},
        {"From: <sip:h>\xff;tag=1", "|KxSipURL|", "From: <sip:h>"},
        {"From: <sip:h>,sip:g;x=1,\t<tel:2>;y", "|KxSipURL| & |KxSipURL|x=1 & |KxTelURL|y",
         "From: <sip:h> & From: <sip:g>;x=1 & From: <tel:2>;y"},
        {"From: tel:+1;isub=2;tag=1", "|KxTelURL|", "From: <tel:+1;isub=2;tag=1>"},
        {"From: <urn:a,b> ;tag=1", "|KxURI|tag=1", "From: <urn:a,b>;tag=1"},
        {"From: urn:a,b;tag=1", "|KxURI|", "From: <urn:a,b;tag=1>"},
        // From and To keep only URL parameters that identify the user
        {"From: <sip:h;user=phone;transport=tcp;MAddr=x;ttl=1?a=b>;tag=1", "|KxSipURL|tag=1",
         "From: <sip:h;user=phone>;tag=1"},
        {"From: <sip:>;sip:;1001@10.0.0.1", "", "KxSipParseError: Sip URL wrong format"},
        {"From: <sip:h>;tag=1, <", "", "KxException: INVALID URI"},
    });
    EXPECT_EQ(outcomeOf([] { return linesOf(*KxMake<KxSipToHeader>("Bob\n")); }), "KxSipParseError: URL not specified");
}

TEST(AddressHeaderTest, Contact) {
    expectRows<KxSipContactHeader, addressFields<KxSipContactHeader>>({
        {"m:\t*;expires=0, sip:h", "|KxURI| & |KxSipURL|", "m: * & Contact: <sip:h>"},
        {"Contact: * <sip:h>", "|KxURI|", "Contact: *"},
        {"Contact: <sip:a;b@h>, <sip:c;d=1>,<sip:e@i>", "|KxSipURL| & |KxSipURL| & |KxSipURL|",
         "Contact: <sip:a;b@h> & Contact: <sip:c;d=1> & Contact: <sip:e@i>"}, // whose "@" it is
        {"Contact: <sip:h;transport=tcp;lr?a=b>;q=0.5", "|KxSipURL|q=0.5",
         "Contact: <sip:h;transport=tcp;lr?a%3Db>;q=0.5"},
        {"m: \"c, d\" <sip:a@h>;q=\"0,5\";expires=60, sip:b:pw@h;x,urn:d,e",
         "\"c, d\"|KxSipURL|q=\"0,5\";expires=60 & |KxSipURL|x & |KxURI|",
         "m: \"c, d\" <sip:a@h>;q=\"0,5\";expires=60 & Contact: <sip:b:pw@h>;x & Contact: <urn:d,e>"},
        {"Contact: <>", "", "KxException: INVALID URI"},
        {"Contact: sip:h,", "", "KxSipParseErrorEmptyHeader: SIP Header parse error : nothing after the colon"},
        {"Contact: sip:h,,", "", invalid(",")},
    });
    const auto contact = KxMake<KxSipContactHeader>("sip:h;Q=0.5;expires=60");
    EXPECT_EQ(joined(contact->getQValue(), contact->getExpires()), "0.5|60");
    contact->setAction("proxy");
    contact->setComment("c");
    contact->removeQValue();
    EXPECT_EQ(linesOf(*contact), "Contact: <sip:h>;expires=60;action=proxy (c)");
    const auto all = KxMake<KxSipContactHeader>("*");
    EXPECT_TRUE(all->isWildCard() && all->getURL().isNil() && all->getDisplayName().empty());
    EXPECT_EQ(all->getExpires(), "");
    all->setExpires("0");
    EXPECT_EQ(linesOf(*all), "Contact: *;expires=0");
}

TEST(AddressHeaderTest, RoutesDropHeaderParametersAndSayWhoFailed) {
    constexpr const char* kRoute = "KxSipParseError: Invalid Name-Address in KxSipRouteHeader";
    expectRows<KxSipRouteHeader, addressFields<KxSipRouteHeader>>({
        {"Route: <sip:p;lr>, a <sip:q;lr>;x=1 , sip:r;lr", "|KxSipURL| & a|KxSipURL| & |KxSipURL|",
         "Route: <sip:p;lr> & Route: a <sip:q;lr> & Route: <sip:r>"},
        {"Route: sips:p", "", kRoute},
        {"Route: <sip:p>;x=\"1,2\"", "", kRoute},
    });
    const std::string record = "KxSipParseError: Exception when parsing Name-Address in KxSipRecordRouteHeader: ";
    expectRows<KxSipRecordRouteHeader, addressFields<KxSipRecordRouteHeader>>({
        {"Record-Route: a@b", "", record + "Invalid Character (@) in name-addr"},
        {"Record-Route: <p>", "", record + "INVALID URI"},
    });
}

TEST(AddressHeaderTest, ReferToKeepsTheBareURI) {
    expectRows<KxSipReferToHeader>(
        [](const KxSipReferToHeader& header) {
            return joined(header.getURI()->getString(), header.getURL().isNil() ? "no SIP URL" : "SIP URL");
        },
        {
            {"Refer-To: <tel:1>;x, sip:a@h", "tel:1|no SIP URL & sip:a@h|SIP URL",
             "Refer-To: tel:1 & Refer-To: sip:a@h"},
            // without the brackets, the URL is read as another one
            {"Refer-To: <sip:h;method=BYE>", "sip:h;method=BYE|SIP URL", "Refer-To: sip:h;method=BYE",
             "Refer-To: sip:h"},
            {"Refer-To: <a@b:c>", "a@b:c|no SIP URL", "Refer-To: a@b:c", invalid("@")},
        });
}

TEST(AddressHeaderTest, ReferredByAndCCDiversion) {
    expectRows<KxSipReferredByHeader, addressFields<KxSipReferredByHeader>>(
        {{"Referred-By: sip:h;cid=\"a@b, c\"", "|KxSipURL|cid=\"a@b, c\"", "Referred-By: <sip:h>;cid=\"a@b, c\""}});
    expectRows<KxSipCCDiversionHeader, addressFields<KxSipCCDiversionHeader>>(
        {{"CC-Diversion: <sip:a>;reason=busy, <sip:b>", "|KxSipURL|reason=busy & |KxSipURL|",
          "CC-Diversion: <sip:a>;reason=busy & CC-Diversion: <sip:b>"}});
}

TEST(AddressHeaderTest, HeadersHoldCopies) {
    const auto url = KxMake<KxSipURL>("sip:h;lr");
    const KxHandle<KxParameters> parameters(new KxParameters);
    parameters->setValue("x", KxString("1"));
    const auto from = KxMake<KxSipFromHeader>(url, parameters);
    const auto copy = KxMake<KxSipFromHeader>(*from);
    url->clearParameters();
    parameters->clear();
    from->setTag(nullptr);
    from->setTag("");
    EXPECT_FALSE(from->isTagPresent());
    from->setTag("t");
    from->getNameAddress()->getURL()->clearParameters();
    EXPECT_EQ(linesOf(*from), "From: <sip:h>;x=1;tag=t");
    EXPECT_EQ(linesOf(*copy), "From: <sip:h;lr>;x=1");
    EXPECT_EQ(from->getURL(), "sip:h");

    const KxHandle<KxSipNameAddress> nothing;
    EXPECT_EQ(linesOf(*KxMake<KxSipToHeader>(nothing)), "To: <:>");
    const auto bob = KxMake<KxSipNameAddress>("Bob", KxHandle<KxURI>(new KxTelURL("tel:1")));
    const auto contact = KxMake<KxSipContactHeader>(bob);
    bob->getURI()->parse("tel:2");
    EXPECT_EQ(linesOf(*contact), "Contact: Bob <tel:1>");
    EXPECT_TRUE(contact->getURL().isNil());
}

TEST(AddressHeaderTest, StreamsTakeHandles) {
    const auto text = [](const auto& handle) {
        KxByteArrayOutputStream out;
        out << handle;
        return std::string(out.view());
    };
    KxByteArrayInputStream in("A <sip:a>");
    KxHandle<KxSipNameAddress> address;
    in >> address;
    EXPECT_EQ(text(address), "A <sip:a>");
    const KxSipNameAddress* const made = address.get();
    KxByteArrayInputStream second("<sip:b>");
    second >> address;
    EXPECT_EQ(address.get(), made);
    EXPECT_EQ(text(address) + text(address->getURL()) + text(KxMake<KxTelURL>("tel:1")), "<sip:b>sip:btel:1");
    EXPECT_EQ(text(KxHandle<KxSipURL>()) + text(KxHandle<KxTelURL>()), "");
}
