#include "tests/sipobject/support/HeaderSupport.h"

constexpr const char* kNoToken = "KxSipParseError: Header token expected";
constexpr const char* kNoColon = "KxSipParseError: SIP Header parse error : no colon found";
constexpr const char* kNothing = "KxSipParseErrorEmptyHeader: SIP Header parse error : nothing after the colon";

/** What the lines of the next header are written as, or the failure. */
static std::string readLines(KxInputStream& in) {
    const Balance balance;
    return outcomeOf([&in] { return linesOf(*KxSipHeader::sConstructFrom(in)); });
}

TEST(HeaderLineTest, ALineEndsWhereNoBlankFollows) {
    expectReads<readLines>({
        {"Call-ID: a\n\tb\nX", "Call-ID: ab", "X"},
        {"X-A: a\r\n \t b\r\n\r\nrest", "X-A: a\t b", "\r\nrest"},
        {"X-A:\r\n \r\n a\r\n:", "X-A: a", ":"},
        {"X-A: a", "X-A: a"},
        {"X-A: a\r", "X-A: a"},
        {"X-A: \ra\r\rb\r \r\r\nX", "X-A: ab ", "X"},
        {"X-A: a\r\n\rX", "X-A: a", "\rX"},
        {std::string("X-A: a\0b\r\n", 10), std::string("X-A: a\0b", 8)},
        {"Allow: a,\r\n b\r\n ,\r\n\tc\r\n", "Allow: a & Allow: b & Allow: c"},
        {"X-A: " + std::string(255, 'a') + "\r\n " + std::string(1000, 'b') + "\n",
         "X-A: " + std::string(255, 'a') + std::string(1000, 'b')},
    });
}

TEST(HeaderLineTest, NamesAreWrittenAsTheyStood) {
    const std::string name(47, 'n');
    expectReads<readLines>({
        {" \t X-A \t: a\r\n", "X-A: a"},
        {"X-A\r\n : a\r\n", "X-A: a"},
        {"X Y::a\r\n", "X Y: :a"},
        {name + ": v\r\n", name + ": v"},
        {"Supported" + name + ": a,b\r\n", "Supported" + name + ": a,b"},
        {std::string(3000, 'V') + " \t:v\r\nX", std::string(3000, 'V') + ": v", "X"},
    });
}

TEST(HeaderLineTest, NamesAreLookedUpAsTheyStandButForBlanks) {
    const auto read = [](KxInputStream& in) {
        const KxHandle<KxSipHeader> header = KxSipHeader::sConstructFrom(in);
        return className(*header) + " " + linesOf(*header);
    };
    for (const char* line : {"V\r\n ia: x\r\n", "Vi\ra: x\r\n", "\rVia: x\r\n", "Via\v: x\r\n", "\fVia: x\n"}) {
        EXPECT_EQ(readEveryWay(line, read), "KxSipUnknownHeader Via: x@") << escaped(line);
    }
    EXPECT_EQ(readEveryWay("\t aLLow \t\r\n : x\r\n", read), "KxSipAllowHeader aLLow: x@");
}

TEST(HeaderLineTest, Faults) {
    expectReads<readLines>({
        {" \t", kNoToken},
        {"\t : x\r\n y\r\n", kNoToken, " y\r\n"},
        {"\v : x\r\nTo: y", kNoToken, "To: y"},
        {"Supported\r\nTo: y", kNoColon, "To: y"},
        {"Supported a,b\r\n c\r\nTo: y", kNoColon, "To: y"},
        {"\r\nTo: y", kNoColon, "To: y"},
        {"Supported: \t\r\n \v\f\r\nTo: y", kNothing, "To: y"},
        {"Supported: a, \r\n \t\r\nX", kNothing, "X"},
        {"Allow: a,;,b\r\nX", "KxSipParseError: Empty method in Allow header", "X"},
    });
}

TEST(HeaderLineTest, ParseFillsAnObjectAndItsChain) {
    const auto allow = KxMake<KxSipAllowHeader>("X");
    const auto parse = [&allow](std::string_view line) {
        return outcomeOf([&] {
            KxByteArrayInputStream in(line);
            allow->parse(in);
            return linesOf(*allow);
        });
    };
    EXPECT_EQ(parse(" aLLow : B, C;x"), "aLLow: B & Allow: C");
    EXPECT_EQ(parse(": D, E"), ": D & Allow: C & Allow: E");
    EXPECT_EQ(parse("Allow"), kNoColon);
    EXPECT_EQ(parse("Allow: \r\n"), kNothing);
    EXPECT_EQ(parse("Allow: F, ;"), "KxSipParseError: Empty method in Allow header");
    EXPECT_EQ(linesOf(*allow), ": D & Allow: C & Allow: E");
    EXPECT_TRUE(KxMake<KxSipAllowHeader>(*allow)->getNext().isNil());
}

TEST(HeaderLineTest, OperationsAreTraced) {
    const ClassLog capture("tandril.kx", log4cplus::TRACE_LOG_LEVEL);
    const KxHandle<KxSipHeader> header = readHeader("Allow: A,B,C");
    written(*header);
    std::string entered;
    for (const LogRecord& record : capture.records) {
        if (record.text.find("ENTER : ") == 0) {
            EXPECT_EQ(record.logger, "tandril.kx." + record.text.substr(8, record.text.find("::") - 8));
            entered += record.text.substr(8) + " ";
        }
    }
    const std::string value = "KxSipHeader::parseRest KxSipAllowHeader::doParse ";
    const std::string next = "KxSipHeader::sConstruct " + value;
    EXPECT_EQ(entered, "KxSipHeader::sConstructFrom KxSipHeader::sConstruct KxSipHeader::parse " + value + next + next +
                           "KxSipHeader::serialize KxSipAllowHeader::doSerialize KxSipAllowHeader::doSerialize "
                           "KxSipAllowHeader::doSerialize ");
}

/** The steps that docs/architecture.md names are called in that order while a Via line is read. */
TEST(HeaderLineTest, TheRoadIsAsThePageSays) {
    const std::string page = fileText(KX_SOURCE_DIR "/docs/architecture.md");
    const std::size_t begin = page.find("<!-- begin road -->");
    std::string steps;
    for (std::size_t at = page.find("\n| `", begin); at < page.find("<!-- end road -->");
         at = page.find("\n| `", at + 1)) {
        steps += page.substr(at + 4, page.find('`', at + 4) - at - 4) + "\n";
    }
    ASSERT_NE(begin, std::string::npos);
    std::string entered;
    const ClassLog capture("tandril.kx", log4cplus::TRACE_LOG_LEVEL);
    EXPECT_NE(outcomeOf([] { return written(*readMessage("OPTIONS sip:h SIP/2.0\r\nVia: SIP/2.0/UDP h\r\n\r\n")); }),
              "");
    for (const LogRecord& record : capture.records) {
        if (record.text.starts_with("ENTER : ") && !entered.ends_with("asynchAddHeader\n")) {
            entered += record.text.substr(8) + "\n";
        }
    }
    EXPECT_EQ(entered, steps);
}

/** After a change of level, each operation uses the new level, even if it is the first one called. */
TEST(HeaderLineTest, EachOperationAloneGoesByTheLevelOfNow) {
    const auto from = readAs<KxSipFromHeader>("From: <sip:h>");
    const auto tel = KxMake<KxSipNameAddress>("tel:1");
    KxHandle<KxSipNameAddress> streamed;
    const KxHandle<KxSipNameAddress>& address = from->getNameAddress();
    const KxHandle<KxSipURL> url = address->getURL();
    const auto route = readAs<KxSipRouteHeader>("Route: <sip:h>");
    const auto via = readAs<KxSipViaHeader>("Via: SIP/2.0/UDP h");
    const auto reading = [](const char* text, auto read) {
        return [text, read] {
            KxByteArrayInputStream in{std::string_view(text)};
            read(in);
        };
    };
    const std::pair<std::string, std::function<void()>> rows[] = {
        {"KxSipNameAddress::getURL returns NULL since tel:1 isn't a SIP URL", [&] { tel->getURL(); }},
        {"ENTER : KxSipNameAddress copy ctor", [&] { KxSipNameAddress copy(*address); }},
        {"ENTER : KxSipNameAddress::parse(1)",
         reading("sip:h", [](auto& in) { KxSipNameAddress::sConstructFrom(in); })},
        {"ENTER : KxSipNameAddress::parse(1)", reading("sip:h", [&](auto& in) { in >> streamed; })},
        {"ENTER : KxSipNameAddress::parse(1)", reading("tel:1", [&](auto& in) { tel->parse(in); })},
        {"ENTER : KxSipNameAddress::parse(2)", [&] { tel->parse("tel:1"); }},
        {"ENTER : KxURI::sConstructFrom", reading("urn:a", [](auto& in) { KxURI::sConstructFrom(in, true); })},
        {"ENTER : KxSipURL::parseHeader", [&] { KxSipURL("sip:h?a=b"); }},
        {"ENTER : KxSipURL::parseHeader", reading("a=b", [&](auto& in) { url->parseHeader(in); })},
        {"ENTER : KxSipHeader::parse", reading("From: <sip:h>", [&](auto& in) { from->parse(in); })},
        {"ENTER : KxSipFromHeader copy ctor", [&] { KxHandle<KxSipHeader>(from->clone()); }},
        {"ENTER : KxSipNameAddress copy ctor", [&] { KxHandle<KxSipHeader>(route->clone()); }},
        {"ENTER : KxSipViaHeader copy ctor", [&] { KxHandle<KxSipHeader>(via->clone()); }},
        {"ENTER : KxSipFromHeader ctor (1)", [&] { KxSipFromHeader{address}; }},
        {"ENTER : KxSipToHeader ctor(2)", [&] { KxSipToHeader(url, {}); }},
        {"ENTER : KxSipContactHeader ctor", [&] { KxSipContactHeader{address}; }},
        {"ENTER : KxSipRouteHeader ctor", [&] { KxSipRouteHeader{address}; }},
        {"ENTER : KxSipRecordRouteHeader ctor", [&] { KxSipRecordRouteHeader{address}; }},
        {"ENTER : KxSipCCDiversionHeader ctor", [&] { KxSipCCDiversionHeader{address}; }},
        {"ENTER : KxSipReferredByHeader ctor (1)", [&] { KxSipReferredByHeader(address, {}); }},
        {"ENTER : KxSipRouteHeader::doParse", [&] { KxSipRouteHeader("<sip:h>"); }},
    };
    for (const auto& [text, operation] : rows) {
        operation(); // now the loggers exist, at level OFF
        ClassLog capture("tandril.kx", log4cplus::TRACE_LOG_LEVEL);
        operation();
        const std::vector<std::string> texts = capture.texts();
        EXPECT_EQ(std::count(texts.begin(), texts.end(), text), 1) << text;
    }
}
