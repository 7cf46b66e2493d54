#include "sipheaders/KxSipHeaders.h"
#include "sipobject/headers/KxSipUnreadHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

const std::string kFolder = KX_SOURCE_DIR "/tests/sipheaders/";

/** The lines of the message that has every header of the library. */
std::vector<std::string> everyLine() {
    std::vector<std::string> lines;
    const std::string text = fileText(kFolder + "every_header.sip");
    for (std::size_t begin = text.find("Accept-Contact"), end = 0; begin < text.find("Content-Length");
         begin = end + 2) {
        end = text.find("\r\n", begin);
        lines.push_back(text.substr(begin, end - begin));
    }
    return lines;
}

/** Expects that each value is read with its URL, is written as it was received, and anew after the URL has changed; and
    that a line of all of them is as many values, unless the header may be there once. */
template <class H>
void readsAddresses(bool isList) {
    const std::string name = std::string(H::sToken.view()) + ": ";
    const auto fields = [](const H& header) {
        const KxHandle<KxSipURL> url = header.getURL();
        return joined(header.getDisplayText(), url.isNil() ? KxString("none") : url->getHost(),
                      url.isNil() ? KxString() : url->getHeader("Reason"), header.getParameter("x"));
    };
    HeaderRow list{name, "", ""};
    for (const auto& [value, expected] : std::initializer_list<std::pair<std::string, std::string>>{
             {"\"Bell, \\\"A\\\" <b>\"  <sip:a@[2001:db8::1]:5080;lr> ;x=\"1,2\"",
              "Bell, \"A\" <b>|2001:db8::1||\"1,2\""},
             {"<sips:a@h?Reason=SIP%3Bcause%3D302&Privacy=history>;index=1", "|h|SIP;cause=302|"},
             {"sip:a@h ;X = y", "|h||y"},
             {"<tel:+1-2;ext=3> ; x", "|none||"},
             {"<urn:a?b,c>", "|none||"}}) {
        expectRow<H>({name + value, expected}, fields);
        const KxHandle<H> header = readAs<H>(name + value);
        if (const KxHandle<KxSipURL> url = header->getURL(); !url.isNil()) {
            url->setHost("changed");
            const std::string changed = linesOf(*header);
            EXPECT_NE(changed.find("@changed"), std::string::npos) << changed;
            EXPECT_EQ(linesOf(*readAs<H>(changed)), changed);
        }
        list.line += (list.fields.empty() ? "" : " , ") + value;
        list.written += (list.written.empty() ? "" : " & ") + name + value;
        list.fields += (list.fields.empty() ? "" : " & ") + expected;
    }
    list.written = isList ? list.written : "KxSipParseError: SIP Header parse error : text after the value";
    expectRow<H>(list, fields);
    expectRow<H>({name + "<sip:h>x", "", "KxSipParseError: Invalid text after the value of a header"}, fields);
    EXPECT_NE(outcomeOf([] { return linesOf(*KxMake<H>(KxSipText("<sip:a>, <sip:b>"))); }).find("text after the value"),
              std::string::npos);
}

template <class... H>
void eachReadsAddresses(bool isList) {
    (readsAddresses<H>(isList), ...);
}

} // namespace

TEST(HeaderLibraryTest, EveryNameInEveryLetterCase) {
    std::set<HeaderID> ids;
    for (const std::string& line : everyLine()) {
        const std::string name = line.substr(0, line.find(':'));
        const KxHandle<KxSipHeader> header = readHeader(line);
        std::string theClass = "KxSip" + name + "Header";
        std::erase(theClass, '-');
        for (const KxString& known : {header->getExpandedToken(), header->getCompactToken()}) {
            for (const std::string& spelled : {std::string(known.upper().view()), std::string(known.lower().view())}) {
                const std::string text = spelled + line.substr(name.size());
                const KxHandle<KxSipHeader> read = readHeader(text);
                EXPECT_TRUE(KxAscii::equalsNoCase(className(*read), theClass)) << text;
                EXPECT_EQ(linesOf(*read), text);
                EXPECT_EQ(joined(read->getExpandedToken(), read->getHeaderID()), joined(name, header->getHeaderID()));
            }
        }
        EXPECT_TRUE(ids.insert(header->getHeaderID()).second) << line;
    }
    EXPECT_GE(*ids.begin(), KxHeaderIDs::kCount);
}

/** Fails with what is missing for a class that is switched on. */
TEST(HeaderLibraryTest, NoRegisteredNameIsLeftOut) {
    std::string lines;
    for (const std::string& line : everyLine()) {
        lines += "\n" + line;
    }
    const std::string words = fileText(KX_SOURCE_DIR "/fuzz/header.dict");
    const std::string fuzzed = fileText(KX_SOURCE_DIR "/fuzz/fuzz_header.cpp");
    std::size_t known = 0;
    for (const std::string_view registered : KxSipHeader::sNames()) {
        const std::string name(registered);
        const std::size_t at = lines.find("\n" + name + ": ");
        if (at == std::string::npos) {
            continue;
        }
        ++known;
        EXPECT_TRUE(
            std::filesystem::exists(KX_SOURCE_DIR "/fuzz/seeds/header/" + std::string(KxString(name).lower().view())))
            << name << " has no seed";
        EXPECT_NE(words.find("\"" + name + ":\""), std::string::npos) << name << " is not in the dictionary";
        EXPECT_TRUE(fuzzed.find(" " + name + " ") != std::string::npos ||
                    fuzzed.find("\"" + name + " ") != std::string::npos)
            << name << " is not in the list of the fuzzer";
    }
    EXPECT_EQ(known, everyLine().size());
}

TEST(HeaderLibraryTest, AddressesOfEveryClass) {
    eachReadsAddresses<KxSipDiversionHeader, KxSipGeolocationHeader, KxSipHistoryInfoHeader,
                       KxSipPAssertedIdentityHeader, KxSipPAssociatedURIHeader, KxSipPPreferredIdentityHeader,
                       KxSipPathHeader, KxSipRemotePartyIDHeader, KxSipServiceRouteHeader>(true);
    eachReadsAddresses<KxSipPCalledPartyIDHeader, KxSipReplyToHeader>(false);
}

/** What was received is written, until a handle, a parameter or a setter changes the value; copies are like their
    original. */
TEST(HeaderLibraryTest, WhatNobodyChangedIsWrittenAsReceived) {
    const std::string line = "p-asserted-identity: \"A\"<sip:a@h;lr> ;x = 1";
    const auto header = readAs<KxSipPAssertedIdentityHeader>(line);
    const auto copy = KxMake<KxSipPAssertedIdentityHeader>(*header);
    EXPECT_EQ(header->getReceived(), "\"A\"<sip:a@h;lr> ;x = 1");
    header->setParameter("x", KxString("1"));
    EXPECT_EQ(linesOf(*header), line) << "the same value is no change";
    header->getURL()->setUser("b");
    EXPECT_EQ(linesOf(*header), "p-asserted-identity: \"A\" <sip:b@h;lr>;x=1");
    header->getURL()->setUser("a");
    EXPECT_EQ(linesOf(*header), line);
    header->removeParameter("X");
    EXPECT_EQ(linesOf(*header), "p-asserted-identity: \"A\" <sip:a@h;lr>");
    EXPECT_EQ(linesOf(*copy), line);
    const auto again = readAs<KxSipPAssertedIdentityHeader>(line);
    KxByteArrayInputStream in(std::string_view("P-Asserted-Identity:<tel:1>"));
    again->parse(in);
    EXPECT_EQ(linesOf(*again), "P-Asserted-Identity: <tel:1>");
}

TEST(HeaderLibraryTest, AreReadFromAText) {
    EXPECT_EQ(linesOf(*KxSipReasonHeader::sRead(" SIP ;cause=200")), "Reason: SIP ;cause=200");
    for (const auto& [text, why] : {std::pair("SIP, Q.850", "SIP Header parse error : text after the value"),
                                    {"", "Invalid Reason header"},
                                    {";cause=1", "Invalid Reason header"}}) {
        EXPECT_EQ(outcomeOf([value = text] { return linesOf(*KxSipReasonHeader::sRead(value)); }),
                  std::string("KxSipParseError: ") + why);
    }
    EXPECT_NE(outcomeOf([] { return linesOf(*KxSipReasonHeader::sRead("SIP\r\nX: y")); }).find("KxSipParseError"),
              std::string::npos);
}

TEST(HeaderLibraryTest, InAMessage) {
    const std::string text = "OPTIONS sip:b SIP/2.0\r\n" + requiredHeaders("OPTIONS") +
                             "Reason: SIP ;cause=1, ;, Q.850\r\nP-Asserted-Identity: sip:a, <<>\r\nX-A: 1\r\n\r\n";
    const KxHandle<KxSipMessage> message = readMessage(text);
    EXPECT_EQ(message->getStatus(), 1);
    std::string found;
    for (const KxSipReasonHeader& reason : message->values<KxSipReasonHeader>()) {
        found += joined(reason.getProtocol(), reason.getCause().value_or(0)) + " ";
    }
    EXPECT_EQ(found, "SIP|1 Q.850|0 ");
    EXPECT_EQ(message->removeAllNamed("P-ASSERTED-IDENTITY"), 2U);
    message->addHeader(KxMake<KxSipReasonHeader>("X"), true);
    EXPECT_NE(written(*message).find("Reason: X\r\nReason: SIP ;cause=1\r\nReason: ;\r\nReason: Q.850\r\nX-A: 1\r\n"),
              std::string::npos)
        << written(*message);
    // how often a message has a header: a list, which may be empty, or once
    for (const auto& [lines, status] : {std::pair("Privacy: id\r\n", 0),
                                        {"Privacy: id\r\nPrivacy: user\r\n", 1},
                                        {"P-Early-Media: \r\n", 0},
                                        {"Path: \r\n", 1},
                                        {"Refer-Sub: true, false\r\n", 1},
                                        {"SIP-ETag: a\r\n", 0}}) {
        const KxHandle<KxSipMessage> other =
            readMessage("OPTIONS sip:b SIP/2.0\r\n" + requiredHeaders("OPTIONS") + lines + "\r\n");
        EXPECT_EQ(other->getStatus(), status) << lines;
        EXPECT_NE(written(*other).find(lines), std::string::npos) << written(*other);
    }
}

TEST(HeaderLibraryTest, ParameterValues) {
    using Value = KxSipParameterValue;
    for (const char* const text : {"", "a", "a b", "\"\\", "\xc3\xa9", "1,2", "a\\\"b"}) {
        EXPECT_EQ(Value::sText(Value::sQuoted(text)), text);
        EXPECT_EQ(Value::sText(Value::sTokenOrQuoted(text)), text);
    }
    EXPECT_EQ(joined(Value::sText("\"a"), Value::sText("\""), Value::sText("\"a\\\""), Value::sTokenOrQuoted("a-b")),
              "\"a|\"|a\\|a-b");
    EXPECT_TRUE(Value::sText(KxString()).isNil());
    const auto number = [](const KxString& text) { return Value::sNumber(text).value_or(7); };
    EXPECT_EQ(joined(number("0"), number("\"4294967295\""), number("4294967296"), number("-1"), number("1x"),
                     number(" 1"), number(""), number(KxString())),
              "0|4294967295|7|7|7|7|7|7");
}
