#include "sipobject/address/KxURI.h"

#include "sipobject/address/KxSipURL.h"
#include "tests/sipobject/support/MessageSupport.h"

#include <gmock/gmock.h>

using testing::Contains;

namespace {

std::string readURI(KxInputStream& in) {
    return outcomeOf([&in] {
        const KxHandle<KxURI> uri = KxURI::sConstructFrom(in, true);
        const KxHandle<KxURI> copy(uri->clone());
        EXPECT_EQ(className(*copy) + copy->getString().c_str(), className(*uri) + uri->getString().c_str());
        return className(*uri) + ' ' + std::string(uri->getString().view());
    });
}

} // namespace

TEST(URITest, TheFirstThreeLettersChooseTheClass) {
    const struct {
        std::string_view input;
        std::string result;
        const char* rest;
    } rows[] = {
        {"<sip:h>;tag=1", "KxSipURL sip:h", "tag=1"},
        {"  SIP:h", "KxSipURL sip:h", ""},
        {"s i<p:h", "KxSipURL sip:h", ""},
        {"<Tel:1>,x", "KxTelURL tel:1", ",x"},
        {"telegram:1", "KxTelURL tel:1", ""},
        {"<urn:abc>;x", "KxURI urn:abc", ";x"},
        {" urn : a b \r\nNext: x", "KxURI urn:a b", "\r\nNext: x"},
        {"urn:a\nb", "KxURI urn:a", "\nb"},
        {"urn:a<b;c,d>", "KxURI urn:a<b;c,d", ""},
        {":abc", "KxURI :abc", ""},
        {"\tsip:h;a?b", "KxURI sip:h;a?b", ""}, // only blanks are passed over in front
        {"<<sip:h>", "KxURI <sip:h", ""},
        {"", "KxException: INVALID URI", ""},
        {"si", "KxException: INVALID URI", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(readEveryWay(row.input, readURI), row.result + "@" + row.rest) << row.input;
    }
}

TEST(URITest, EqualByteByByte) {
    const auto uri = [](const char* text) {
        const KxHandle<KxURI> read(new KxURI(nullptr));
        read->parse(text);
        return read;
    };
    EXPECT_TRUE(*uri("urn:a") == *uri("<urn: a >"));
    EXPECT_FALSE(*uri("urn:a") == *uri("URN:a"));
    EXPECT_FALSE(*uri("urn:a") == *uri("urn:A"));
}

TEST(URITest, CopiesStayStandalone) {
    KxSipURL standalone(KxSipURL("sip:h"));
    standalone.parse("sip:h;a=1");
    EXPECT_EQ(standalone.getString(), "sip:h;a=1");
    KxSipURL inHeader{KxSipURL()};
    inHeader.parse("sip:h;a=1");
    EXPECT_EQ(inHeader.getString(), "sip:h");
}

TEST(URITest, SaysWhatItRead) {
    ClassLog capture("tandril.kx.KxURI");
    const auto said = [&capture](std::string_view text) {
        KxByteArrayInputStream in(text);
        KxURI::sConstructFrom(in, true)->getString();
        return capture.texts();
    };
    EXPECT_THAT(said("SIP:h;a"), Contains("KxURI: parsed sip URL: sip:h;a"));
    EXPECT_THAT(said("tel:1"), Contains("KxURI: parsed tel URL"));
    EXPECT_THAT(said("urn:x"), testing::ElementsAre("KxURI: parsed URL of unknown scheme", "m_Scheme = urn",
                                                    "m_SchemeData = x", "final aString = urn:x"));
}
