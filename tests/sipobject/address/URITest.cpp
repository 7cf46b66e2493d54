#include "sipobject/address/KxURI.h"

#include "sipobject/address/KxSipURL.h"
#include "tests/sipobject/support/MessageSupport.h"

using testing::Contains;

/** A URI class of the host. */
struct ServiceURI final : KxURI {
    ServiceURI() : KxURI("service") {}
    ServiceURI* clone() const override { return new ServiceURI(*this); }
    KxString getString() const override { return text; }
    void parse(KxInputStream& in) override {
        for (int c = in.read(); c >= 0 && c != '\n'; c = in.read()) {
            text.append(std::string_view(c == '!' ? "" : std::string(1, static_cast<char>(c))));
            if (c == '!') {
                KxException::sThrow("no service");
            }
        }
    }
    KxString text{""};
};

static std::string readURI(KxInputStream& in) {
    return outcomeOf([&in] {
        const KxHandle<KxURI> uri = KxURI::sConstructFrom(in, true);
        const KxHandle<KxURI> copy(uri->clone());
        EXPECT_EQ(className(*copy) + copy->getString().c_str(), className(*uri) + uri->getString().c_str());
        return className(*uri) + ' ' + std::string(uri->getString().view());
    });
}

TEST(URITest, TheFirstThreeLettersChooseTheClass) {
    expectReads<readURI>({
        {"<sip:h>;tag=1", "KxSipURL sip:h", "tag=1"},
        {"  SIP:h", "KxSipURL sip:h"},
        {"s i<p:h", "KxSipURL sip:h"},
        {"<Tel:1>,x", "KxTelURL tel:1", ",x"},
        {"telegram:1", "KxTelURL tel:1"},
        {"<urn:abc>;x", "KxURI urn:abc", ";x"},
        {" urn : a b \r\nNext: x", "KxURI urn:a b", "\r\nNext: x"},
        {"urn:a\nb", "KxURI urn:a", "\nb"},
        {"urn: \r\nVia: x", "KxURI urn:", "\r\nVia: x"},
        {"urn:a<b;c,d>", "KxURI urn:a<b;c,d"},
        {":abc", "KxURI :abc"},
        {"\tsip:h;a?b", "KxURI sip:h;a?b"}, // only blanks before the scheme are skipped
        {"<<sip:h>", "KxURI <sip:h"},
        {"", "KxException: INVALID URI"},
        {"si", "KxException: INVALID URI"},
    });
}

TEST(URITest, OtherSchemesGoByTheRegistry) {
    const auto makeService = []() -> KxURI* { return new ServiceURI; };
    KxURI::sAddConstructor("x-service+1", makeService);
    KxURI::sAddConstructor("sipx", makeService); // not used: its first three letters are those of "sip"
    expectReads<readURI>({
        {"x-service+1:a>;b\nc", "ServiceURI x-service+1:a>;b", "c"},
        {" < X-Service+1:a", "ServiceURI  < X-Service+1:a"},
        {"x-service+1:!", "KxException: no service"},
        {"x-service+1 :a", "KxURI x-service+1:a"},
        {"x-service:a", "KxURI x-service:a"},
        {"x-service+12:a", "KxURI x-service+12:a"},
        {"x-service+1", "KxException: INVALID URI"},
        {"sipx:a", "KxSipParseError: Scheme is not SIP", "a"},
    });
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
