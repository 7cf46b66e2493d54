#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "tests/core/LogCapture.h"
#include "tests/sipobject/support/HeaderSupport.h"

#include <gmock/gmock.h>

namespace {

constexpr const char* kNoToken = "KxSipParseError: Header token expected";
constexpr const char* kNoColon = "KxSipParseError: SIP Header parse error : no colon found";
constexpr const char* kNothing = "KxSipParseErrorEmptyHeader: SIP Header parse error : nothing after the colon";

/** What the lines of the next header are written as, or the failure. */
std::string readLines(KxInputStream& in) {
    return outcomeOf([&in] { return linesOf(*KxSipHeader::sConstructFrom(in)); });
}

struct LineRow {
    std::string text;
    std::string lines;
    std::string rest;
};

void expectLines(std::initializer_list<LineRow> rows) {
    for (const LineRow& row : rows) {
        const Balance balance;
        EXPECT_EQ(readEveryWay(row.text, readLines), row.lines + "@" + row.rest) << escaped(row.text);
    }
}

std::size_t countValues(const KxSipHeader* value) {
    std::size_t count = 0;
    for (; value != nullptr; value = value->getNext().get()) {
        ++count;
    }
    return count;
}

std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

constexpr std::size_t kMillion = kUnderThreadSanitizer ? 100'000 : 1'000'000;

} // namespace

TEST(HeaderLineTest, ALineEndsWhereNoBlankFollows) {
    expectLines({
        {"Call-ID: a\r\n b\r\n", "Call-ID: ab", ""},
        {"Call-ID: a\n\tb\nX", "Call-ID: ab", "X"},
        {"Call-ID: a\r\nX", "Call-ID: a", "X"},
        {"X-A: a\r\n \t b\r\n\r\nrest", "X-A: a\t b", "\r\nrest"},
        {"X-A: a\r\n \r\n\tb\r\n", "X-A: ab", ""},
        {"X-A:\r\n \r\n a\r\n:", "X-A: a", ":"},
        {"X-A: a", "X-A: a", ""},
        {"X-A: a\r", "X-A: a", ""},
        {"X-A: a\n", "X-A: a", ""},
        {"X-A: a\r\n ", "X-A: a", ""},
        {"X-A: \ra\r\rb\r \r\r\nX", "X-A: ab ", "X"},
        {"X-A: a\r\n\rX", "X-A: a", "\rX"},
        {std::string("X-A: a\0b\r\n", 10), std::string("X-A: a\0b", 8), ""},
        {"Allow: a,\r\n b\r\n ,\r\n\tc\r\n", "Allow: a & Allow: b & Allow: c", ""},
        {"X-A: " + std::string(255, 'a') + "\r\n " + std::string(1000, 'b') + "\n",
         "X-A: " + std::string(255, 'a') + std::string(1000, 'b'), ""},
    });
}

TEST(HeaderLineTest, NamesAreWrittenAsTheyStood) {
    const std::string name(47, 'n');
    expectLines({
        {" \t X-A \t: a\r\n", "X-A: a", ""},
        {"x-a:a\r\n", "x-a: a", ""},
        {"X-A\r\n : a\r\n", "X-A: a", ""},
        {"X Y::a\r\n", "X Y: :a", ""},
        {"rOuTe: <sip:p>, <sip:q>\r\n", "rOuTe: <sip:p> & Route: <sip:q>", ""},
        {"K: a,b,c\r\n", "K: a & Supported: b & Supported: c", ""},
        {name + ": v\r\n", name + ": v", ""},
        {name + "n: v\r\n", name + "n: v", ""},
        {"Supported" + name + ": a,b\r\n", "Supported" + name + ": a,b", ""},
        {repeated("Via", 1000) + " \t:v\r\nX", repeated("Via", 1000) + ": v", "X"},
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
    expectLines({
        {"", kNoToken, ""},
        {" \t", kNoToken, ""},
        {": x\r\nTo: y", kNoToken, "To: y"},
        {"\t : x\r\n y\r\n", kNoToken, " y\r\n"},
        {"\v : x\r\nTo: y", kNoToken, "To: y"},
        {"Supported\r\nTo: y", kNoColon, "To: y"},
        {"Supported a,b\r\n c\r\nTo: y", kNoColon, "To: y"},
        {"\r\nTo: y", kNoColon, "To: y"},
        {"X", kNoColon, ""},
        {"X:", kNothing, ""},
        {"Supported:\r\nTo: y", kNothing, "To: y"},
        {"Supported: \t\r\n \v\f\r\nTo: y", kNothing, "To: y"},
        {"Supported: a, \r\n \t\r\nX", kNothing, "X"},
        {"Allow: a,;,b\r\nX", "KxSipParseError: Empty method in Allow header", "X"},
    });
}

TEST(HeaderLineTest, ParseFillsAnObjectAndItsChain) {
    const KxHandle<KxSipAllowHeader> allow(new KxSipAllowHeader("X"));
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
    EXPECT_EQ(countValues(allow.get()), 3U);
    const KxHandle<KxSipAllowHeader> copy(new KxSipAllowHeader(*allow));
    EXPECT_EQ(countValues(copy.get()), 1U);
}

TEST(HeaderLineTest, AMillionValuesTakeNoStack) {
    onSmallStack([] {
        const Balance balance;
        {
            const KxHandle<KxSipHeader> first = readHeader("k:" + std::string(kMillion, ',') + "timer\r\n");
            EXPECT_EQ(countValues(first.get()), kMillion + 1);
            const std::string text = written(*first);
            EXPECT_EQ(text.size(), 5 + (kMillion - 1) * 13 + 18);
            EXPECT_EQ(text.substr(text.size() - 33), "\r\nSupported: \r\nSupported: timer\r\n");
        }
        EXPECT_EQ(outcomeOf([] { return written(*readHeader("k: a" + std::string(kMillion, ',') + "\r\n")); }),
                  kNothing);
    });
}

TEST(HeaderLineTest, LongListsCostWhatTheirLengthCosts) {
    constexpr std::size_t kMany = 100'000;
    const auto values = [](const std::string& line) { return countValues(readHeader(line + "x\r\n").get()); };
    EXPECT_EQ(values("Contact: " + repeated("sip:a,", kMany) + "sip:"), kMany + 1);
    EXPECT_EQ(values("Contact: " + repeated("sip:a\",", kMany) + "sip:"), kMany + 1);
    EXPECT_EQ(values("Contact: " + repeated("<sip:a;b>;c=\",\",", kMany) + "sip:"), kMany + 1);
    EXPECT_EQ(values("Via: " + repeated("SIP/2.0/UDP h(,)(;)(,", kMany) + ")"), 1U);

    std::string list;
    for (std::size_t i = 0; i < kMany; ++i) {
        list += ";p" + std::to_string(i);
    }
    for (const std::string& line : {"Contact: <sip:a>" + list, "Contact: <sip:a" + list + ">",
                                    "Via: SIP/2.0/UDP h" + list, "Content-Type: a/b" + list}) {
        EXPECT_EQ(linesOf(*readHeader(line + list + ";\r\n")).substr(0, line.size()), line) << line.substr(0, 20);
    }
}

TEST(HeaderLineTest, OperationsAreTraced) {
    const LogCapture capture;
    log4cplus::Logger::getInstance("tandril.kx").setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    const KxHandle<KxSipHeader> header = readHeader("Allow: A,B\r\n");
    written(*header);
    std::vector<std::string> entered;
    for (const LogRecord& record : capture.records) {
        if (record.text.find("ENTER : ") == 0) {
            EXPECT_EQ(record.logger, "tandril.kx." + record.text.substr(8, record.text.find("::") - 8));
            entered.push_back(record.text.substr(8));
        }
    }
    EXPECT_THAT(entered,
                testing::IsSupersetOf({"KxSipHeader::sConstructFrom", "KxSipHeader::sConstruct", "KxSipHeader::parse",
                                       "KxSipHeader::parseRest", "KxSipAllowHeader::doParse",
                                       "KxSipAllowHeader::doParse", "KxSipHeader::serialize",
                                       "KxSipAllowHeader::doSerialize", "KxSipAllowHeader::doSerialize"}));
}
