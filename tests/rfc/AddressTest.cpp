#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

/** Whether the text is read as a header of class H, and written again as one that reads the same. */
std::string parametersOf(const KxHandle<KxParameters>& list) {
    std::string all;
    for (const auto& [name, value] : *list) {
        all.append(all.empty() ? "" : " ").append(name.view()).append("=").append(value.view());
    }
    return all;
}

/** display name|URI|parameters */
template <class H>
std::string addressOf(const H& header) {
    const KxSipNameAddress& address = *header.getNameAddress();
    return joined(escaped(address.getDisplayName()), address.getURLString(), parametersOf(header.getParameters()));
}

template <class H>
void expectAddresses(std::initializer_list<HeaderRow> rows) {
    expectRows<H, &addressOf<H>>(rows);
}

constexpr const char* kAfter = "KxSipParseError: Invalid text after the value of a header";
constexpr const char* kInvalid = "KxSipParseError: Invalid SIP Name Address";
constexpr const char* kURL = "KxSipParseError: Sip URL wrong format";
constexpr const char* kQuote = "KxSipParseError: Invalid quote in KxSipNameAddress";

std::string invalid(char c) {
    return std::string("KxSipParseError: Invalid Character (") + c + ") in name-addr";
}

} // namespace

TEST(RFCAddressTest, DisplayNames) {
    const std::string longName(3000, 'x');
    using namespace std::string_literals;
    expectAddresses<KxSipFromHeader>({
        {"From: sip:b@h", "|sip:b@h|", "From: <sip:b@h>"},
        {"From: Bob\t  B<sip:b>", "Bob\\x09  B|sip:b|", "From: Bob\t  B <sip:b>"},
        {"From:\t.!%*_+`'~-1 \t <sip:b>", ".!%*_+`'~-1|sip:b|", "From: .!%*_+`'~-1 <sip:b>"},
        {R"(From: "A \"B\", <C>; \\"<sip:b>;tag=1)", R"("A \\"B\\", <C>; \\\\"|sip:b|tag=1)",
         R"(From: "A \"B\", <C>; \\" <sip:b>;tag=1)"},
        {"From: \"\" <sip:b>", "\"\"|sip:b|"},
        {"From: \"\tÄ \\\0\\\x7f\" <sip:b>"s, "\"\\x09\\xc3\\x84 \\\\\\x00\\\\\\x7f\"|sip:b|"},
        {"From: " + longName + " <sip:b>", longName + "|sip:b|"},
        {"From: \"" + longName + "\" <sip:b>", '"' + longName + "\"|sip:b|"},
        // RFC 4475 3.1.2.15
        {"From: Bell, Alexander <sip:b>", "", invalid(',')},
        {"From: J@h <sip:b>", "", invalid('@')},
        {"From: \xc3\x84 <sip:b>", "", invalid('\xc3')},
        {"From: a \"b\" <sip:b>", "", invalid('"')},
        {"From: \"a\" b <sip:b>", "", invalid('b')},
        {"From: \"a\"sip:b", "", invalid('s')},
        {"From: Bob sip:b", "", invalid(':')},
        {"From: \"a\":b", "", invalid(':')},
        {"From: :b", "", invalid(':')},
        {"From: \"a\x01\" <sip:b>", "", kQuote},
        {"From: \"a\\\" <sip:b>", "", kQuote},
        {"From: \"a", "", kQuote},
        {"From: Bob", "", "KxSipParseError: URL not specified"},
        {"From: \"Bob\"", "", "KxSipParseError: URL not specified"},
    });
}

TEST(RFCAddressTest, URIs) {
    expectAddresses<KxSipToHeader>({
        {"To: <sip:b@h;transport=tcp;maddr=m;ttl=1;lr?a=b&c=>;tag=1",
         "|sip:b@h;transport=tcp;maddr=m;ttl=1;lr?a=b&c=|tag=1"},
        {"To: <SIPS:b@[::1]:5>", "|sips:b@[::1]:5|", "To: <sips:b@[::1]:5>"},
        {"To: <tel:1;isub=a:b+c>", "|tel:1;isub=a:b+c|", "To: <tel:1;isub=a:b+c>"},
        {"To: <tel:+1-2;ext=3>\t;\ttag = 1 ; x", "|tel:+1-2;ext=3|tag=1 x=", "To: <tel:+1-2;ext=3>;tag=1;x"},
        {"To: <http://h/a,b;c?d=e>;tag=1", "|http://h/a,b;c?d=e|tag=1"},
        {"To: http://h/a;tag=1", "|http://h/a|tag=1", "To: <http://h/a>;tag=1"},
        {"To: tel:+1 ;tag=1", "|tel:+1|tag=1", "To: <tel:+1>;tag=1"},
        {"To: sip:b@h\t;tag=[::1]:5", "|sip:b@h|tag=[::1]:5", "To: <sip:b@h>;tag=[::1]:5"},
        // RFC 4475 3.1.2.13, 3.1.2.14
        {"To: sip:b@h?Route=x", "", kInvalid},
        {"To: http://h?x", "", kInvalid},
        {"To: < sip:b@h>", "", kInvalid},
        {"To: <sip:b@h >", "", kURL},
        {"To: <sip:b@h\t>", "", kURL},
        {"To: <sip:b@h; lr>", "", kURL},
        {"To: <sip:b@h?a=b c>", "", kURL},
        {"To: <tel: +1>", "", kInvalid},
        {"To: <tel::>", "", "KxSipParseError: Invalid TelURL"},
        {"To: <tel:1+2>", "", "KxSipParseError: Invalid TelURL"},
        {"To: <sip:b@h", "", kURL},
        {"To: <sip:b@h;lr", "", kURL},
        {"To: <sip:b@h?a=b", "", kURL},
        {"To: <tel:+1", "", kInvalid},
        {"To: <http://h\"x\">", "", kInvalid},
        {"To: sip:b@h>", "", kInvalid},
        {"To: <sip:b@h> x", "", kAfter},
        {"To: <sip:b@h>>", "", kAfter},
        {"To: sip:b@h x", "", kAfter},
        {"To: <sip:b@h>\"a\"", "", kAfter},
    });
}

TEST(RFCAddressTest, Parameters) {
    const std::string from = "From: <sip:b>";
    expectAddresses<KxSipFromHeader>({
        {from + ";\ttag=1; x\t=\ty ;z", "|sip:b|tag=1 x=y z=", from + ";tag=1;x=y;z"},
        {from + R"(;a=";,\"=\\";b= "x" ;TAG=1)", R"(|sip:b|a=";,\"=\\" b="x" TAG=1)",
         from + R"(;a=";,\"=\\";b="x";TAG=1)"},
        {from + ";a=1;b=2;A=3", "|sip:b|a=3 b=2", from + ";a=3;b=2"},
        {from + ";a=;b=c==;d=\"\"", "|sip:b|a= b=c== d=\"\"", from + ";a;b=c==;d=\"\""},
        // RFC 4475 3.1.2.1
        {from + ";;tag=1", "", kAfter},
        {from + ";tag=1;", "", kAfter},
        {from + "; ;tag=1", "", kAfter},
        {from + ";=1", "", kAfter},
        {from + ";a b", "", kAfter},
        {from + ";a=b c", "", kAfter},
        {from + ";a=\"b\"c", "", kAfter},
        {from + ";a=b\"c\"", "", kAfter},
        {from + ";a=\"b\"\"c\"", "", kAfter},
        {from + ";\"a\"", "", kAfter},
        {from + ";a=\"b\\\"", "", kAfter},
        {from + ";a=<sip:c>", "", kAfter},
        {from + ";a=b\x01", "", kAfter},
    });
    const auto read = KxSipFromHeader("<sip:b>;tag=1;a=2");
    EXPECT_EQ(read.getTag(), "1");
}

TEST(RFCAddressTest, HeadersKeepAllOfTheAddress) {
    expectAddresses<KxSipRouteHeader>({
        {"Route: B <sip:p;lr>;x=\"a,b\", <sip:q;lr>", "B|sip:p;lr|x=\"a,b\" & |sip:q;lr|",
         "Route: B <sip:p;lr>;x=\"a,b\" & Route: <sip:q;lr>"},
        {"Route: <sip:p> x", "", "KxSipParseError: Invalid Name-Address in KxSipRouteHeader"},
    });
    const std::string record = "KxSipParseError: Exception when parsing Name-Address in KxSipRecordRouteHeader: ";
    expectAddresses<KxSipRecordRouteHeader>({
        {"Record-Route: <sip:p;lr>;x=1;y", "|sip:p;lr|x=1 y="},
        {"Record-Route: <sip:p;lr>x", "", record + "Invalid text after the value of a header"},
        {"Record-Route: <tel:1>", "", "KxSipParseError: Invalid SIP URL in Name-Address for Record-Route"},
    });
    expectAddresses<KxSipReferToHeader>({
        {"Refer-To: \"B\" <sip:c;x=1?Replaces=a%3Bto-tag%3D1>;y=\"2\"",
         "\"B\"|sip:c;x=1?Replaces=a%3Bto-tag%3D1|y=\"2\""},
        {"Refer-To: sip:c;y=2", "|sip:c|y=2", "Refer-To: <sip:c>;y=2"},
    });
    expectAddresses<KxSipReferredByHeader>({
        {"Referred-By: sip:r@h ; cid=\"1,2@h\"", "|sip:r@h|cid=\"1,2@h\"", "Referred-By: <sip:r@h>;cid=\"1,2@h\""},
    });
    expectAddresses<KxSipCCDiversionHeader>({
        {"CC-Diversion: <tel:1>;reason=\",\" ,<sip:b>", "|tel:1|reason=\",\" & |sip:b|",
         "CC-Diversion: <tel:1>;reason=\",\" & CC-Diversion: <sip:b>"},
    });
    expectRows<KxSipContactHeader>(
        [](const KxSipContactHeader& header) {
            return joined(header.isWildCard(), parametersOf(header.getParameters()));
        },
        {
            {"Contact: * ;\texpires=0", "1|expires=0", "Contact: *;expires=0"},
            {"Contact: *x", "", kAfter},
            {"Contact: \"a,b\" <sip:c,d@h>;x=\"a,b\",sip:e\t,<sip:f>", "0|x=\"a,b\" & 0| & 0|",
             "Contact: \"a,b\" <sip:c,d@h>;x=\"a,b\" & Contact: <sip:e> & Contact: <sip:f>"},
            {"Contact: <sip:a>, <sip:b> x", "", kAfter},
        });
}

TEST(RFCAddressTest, CommasInQuotesSeparateNoValues) {
    const auto type = [](const auto& header) {
        return joined(header.getType(), header.getSubType(), parametersOf(header.getParameters()));
    };
    expectRows<KxSipContentTypeHeader>(type,
                                       {
                                           {"Content-Type: text\t/ plain ; a = \"x,;\\\"y\"",
                                            "text|plain|a=\"x,;\\\"y\"", "Content-Type: text/plain;a=\"x,;\\\"y\""},
                                           {"Content-Type: a/b c", "", kAfter},
                                           {"Content-Type: a;b/c", "", "KxSipParseError: Invalid Accept header"},
                                           {"Content-Type: a/b;c=\"d", "", kAfter},
                                       });
    expectRows<KxSipAcceptHeader>(
        type, {
                  {"Accept: a/b;x=\"1, 2\";q=1 , c/*", "a|b|x=\"1, 2\" q=1 & c|*|",
                   "Accept: a/b;x=\"1, 2\";q=1 & Accept: c/*"},
                  {"Accept: a, b/c;; d, e/f", "|| & || & e|f|", "Accept: a & Accept: b/c;; d & Accept: e/f"},
              });
    const std::pair<const char*, const char*> rows[] = {
        {"Event: e;a=\",\";id=1", "Event: e;a=\",\";id=1"},
        {"Event: e x;id=\"1,2\"", kAfter},
        {"Content-Disposition: d;a=\"b,c\";", kAfter},
        {"Accept-Language: da;a=\",\", en", "Accept-Language: da;a=\",\" & Accept-Language: en"},
        {"Session-Expires: 90 ;\trefresher = uac", "Session-Expires: 90;refresher=uac"},
        {"Min-SE: 90 x", kAfter},
        {"Retry-After: 5 (a, b) ;x=\",\"", "Retry-After: 5 (a, b);x=\",\""},
        {"Retry-After: 5 (a) b, c", "Retry-After: 5 (a) b, c"},
        {"Error-Info: <sip:a,b>, <sip:c>", "Error-Info: <sip:a,b> & Error-Info: <sip:c>"},
        {"Alert-Info: <sip:a,b@h>;x=\"<,\", < sip:a>;y, <sip:b>",
         "Alert-Info: <sip:a,b@h>;x=\"<,\" & Alert-Info: < sip:a>;y & Alert-Info: <sip:b>"},
        {"Warning: 301 h \"a, \\\"b\\\"\", 302 h \"c\"", "Warning: 301 h \"a, \\\"b\\\"\" & Warning: 302 h \"c\""},
        {"Reason: Q.850;text=\"a,b\", SIP", "Reason: Q.850;text=\"a,b\", SIP"},
        {"Replaces: a@h ;\tto-tag = 1;from-tag=\"2,3\"", "Replaces: a@h;to-tag=1;from-tag=\"2,3\""},
        {"Replaces: a@h;to-tag=1;from-tag=2;", kAfter},
    };
    for (const auto& [line, lines] : rows) {
        EXPECT_EQ(outcomeOf([&, &text = line] { return linesOf(*readHeader(text)); }), lines) << line;
    }
}

TEST(RFCAddressTest, ChangesOnlyWhatCanBeRead) {
    const auto url = KxMake<KxSipURL>("sip:h");
    KxSipRouteHeader route(KxMake<KxSipNameAddress>("Bell, \"A\"\\", url));
    EXPECT_EQ(lineOf(route), R"(Route: "Bell, \"A\"\\" <sip:h>)");
    route.setParameter("x", "1");
    const KxHandle<KxParameters> list = route.getParameters();
    for (const char* const refused : {"Route: <sip:p>;y=2;\r\n", "Route: <sip:p\r\n", "Route: \"a\r\n"}) {
        KxByteArrayInputStream in{std::string_view(refused)};
        EXPECT_NE(outcomeOf([&] { route.parse(in); }), "");
        EXPECT_EQ(lineOf(route), R"(Route: "Bell, \"A\"\\" <sip:h>;x=1)");
    }
    KxByteArrayInputStream in{std::string_view("Route: <sip:p>;y=2\r\n")};
    route.parse(in);
    EXPECT_EQ(lineOf(route), "Route: <sip:p>;y=2");
    EXPECT_EQ(list->getString(), "y=2");
    const std::pair<const char*, const char*> names[] = {
        {"", ""},
        {"A\tB", "A\tB"},
        {" A", "\" A\""},
        {"\"a\\\"\"", "\"a\\\"\""},
        {"\"a\"b", "\"\\\"a\\\"b\""},
        {"\xc3\x84\x01", "\"\xc3\x84\\\x01\""},
    };
    for (const auto& [given, name] : names) {
        EXPECT_EQ(KxSipNameAddress(KxString(given), url).getDisplayName(), name);
    }
    EXPECT_EQ(outcomeOf([&] { KxSipNameAddress(KxString("a\r\nb"), url); }),
              "KxSipParseError: Text contains CR, LF or NUL");
    EXPECT_EQ(KxSipNameAddress("sip:h;x=1?a=b").getURLString(), "sip:h;x=1?a=b");
    EXPECT_EQ(lineOf(KxSipReferToHeader(KxHandle<KxURI>(url))), "Refer-To: <sip:h>");
}

TEST(RFCAddressTest, ResponsesKeepRecordRoutes) {
    const std::string route = "Record-Route: \"P\" <sip:p;lr>;x=\"1,2\"\r\n";
    const auto request = KxHandleCast<KxSipRequest>(
        readMessage("INVITE sip:b SIP/2.0\r\n" + requiredHeaders("INVITE") + "Contact: <sip:a>\r\n" + route + "\r\n"));
    EXPECT_THAT(written(*KxMake<KxSipResponse>(200, request, nullptr, nullptr, 0U)), testing::HasSubstr(route));
}

TEST(RFCAddressTest, WhatIsReadIsWrittenStably) {
    forEveryText("a:1@;,?=<>\" \t\\", 4, [](const std::string& text) {
        for (const std::string& line : {"Contact: " + text, "Contact: a:b" + text, "Contact: <sip:a>" + text,
                                        "Contact: \"" + text + "\"<sip:a>"}) {
            KxHandle<KxSipHeader> header;
            if (!outcomeOf([&] { header = readHeader(line); }).empty()) {
                continue;
            }
            for (const KxSipHeader* value = header.get(); value != nullptr; value = value->getNext().get()) {
                const std::string once = lineOf(*value);
                ASSERT_EQ(outcomeOf([&] { return linesOf(*readHeader(once)); }), once) << line;
            }
        }
    });
}
