#include "tests/sipobject/support/HeaderSupport.h"

namespace {

constexpr const char* kInvalid = "KxSipParseError: Invalid Accept header";

/** A class of the host, which may call protected operations. */
struct OpenContentType : KxSipContentTypeHeader {
    explicit OpenContentType(const char* text) { setMediaType(text); }
};

} // namespace

TEST(ContentHeaderTest, ContentLengthTakesWhatDigitsThereAre) {
    expectRows<KxSipContentLengthHeader, &KxSipContentLengthHeader::getContentLength>({
        {"Content-Length: 0", "0"},
        {"l: 0042 bytes", "42", "l: 42"},
        {"Content-Length: 4294967296", "4294967295", "Content-Length: 4294967295"},
        {"Content-Length: " + std::string(1000, '9'), "4294967295", "Content-Length: 4294967295"},
        {"l: 1\r\n 2, 7", "12 & 7", "l: 12 & Content-Length: 7"},
    });
}

TEST(ContentHeaderTest, ContentTypeIsTypeSubtypeAndParameters) {
    expectRows<KxSipContentTypeHeader, &KxSipContentTypeHeader::getType, &KxSipContentTypeHeader::getSubType,
               &KxSipContentTypeHeader::getParameters>({
        {"c: application/sdp", "application|sdp|"},
        {"c: a/b;x;; Y = 1 ;=z;X=", "a|b|x;Y=1;=z", "c: a/b;x;Y=1;=z"},
        {"c: a/b;x=1;y;X=2", "a|b|x=2;y", "c: a/b;x=2;y"},
        {"c: a/b;x=\"1;\\\";2\";y", "a|b|x=\"1;\\\";2\";y"},
        {"c: a/b;x=\"1;y", "a|b|x=\"1;y"},
        {"c: a/b (c);x", "a|b|", "c: a/b"},
        {"c: a/b/c;x", "a|b|", "c: a/b"},
        // a comma ends the parameters even between quotes
        {"c: a/b;x=\"1,2/3\"", "a|b|x=\"1 & 2|3|", "c: a/b;x=\"1 & Content-Type: 2/3"},
        {"c: a/b;x=\"1,2\"", "", kInvalid},
        {"Content-Type: /plain", "", kInvalid},
        {"Content-Type: text/", "", kInvalid},
        {"Content-Type: text;a=b/\"c\"", "", kInvalid},
    });
}

TEST(ContentHeaderTest, AcceptIsAChainOfMediaRanges) {
    expectRows<KxSipAcceptHeader, &KxSipAcceptHeader::getType, &KxSipAcceptHeader::getSubType,
               &KxSipAcceptHeader::getParameters, &KxSipAcceptHeader::getQValue, &KxSipAcceptHeader::getText>({
        {"Accept: application/sdp;level=1, text / *;q=0.5;a=\"b;c\"",
         "application|sdp|level=1|| & text|*|q=0.5;a=\"b;c\"|0.5|",
         "Accept: application/sdp;level=1 & Accept: text/*;q=0.5;a=\"b;c\""},
        // kept as text, up to a comma outside quotes
        {"Accept:  a/b; x=\"1,\\\",2\" , c,d/;e, f/g", "||||a/b; x=\"1,\\\",2\"  & ||||c & ||||d/;e & f|g|||",
         "Accept: a/b; x=\"1,\\\",2\"  & Accept: c & Accept: d/;e & Accept: f/g"},
        {"Accept: a/b;x=\"1, c/d", "||||a/b;x=\"1, c/d"},
        {"Accept: \"a/b;x=\"1,c/d", "\"a|b|x=\"1|| & c|d|||", "Accept: \"a/b;x=\"1 & Accept: c/d"},
    });
}

TEST(ContentHeaderTest, MediaTypesFromTextAreSplitAtTheFirstSlash) {
    const std::tuple<const char*, std::string, std::string> rows[] = {{"multipart/mixed/x", "multipart", "mixed/x"},
                                                                      {" a / b ", " a ", " b "},
                                                                      {"text", "text", ""},
                                                                      {"/x", "", "x"},
                                                                      {nullptr, "", ""}};
    for (const auto& [text, type, subType] : rows) {
        const auto header = KxMake<OpenContentType>(text);
        EXPECT_EQ(joined(header->getType(), header->getSubType()), joined(type, subType));
        EXPECT_EQ(header->getMediaType(), type + "/" + subType);
    }
}

TEST(ContentHeaderTest, ACopyHasParametersOfItsOwn) {
    const auto header = KxMake<KxSipContentTypeHeader>("a", "b");
    header->setParameter("x", KxString("1"));
    const auto copy = KxMake<KxSipContentTypeHeader>(*header);
    copy->setParameter("X", KxString("2"));
    header->getParameters()->setValue("y", KxString(""));
    EXPECT_EQ(linesOf(*header), "Content-Type: a/b;x=1;y");
    EXPECT_EQ(linesOf(*copy), "Content-Type: a/b;x=2");
    copy->removeParameter("x");
    EXPECT_EQ(linesOf(*copy), "Content-Type: a/b");
}
