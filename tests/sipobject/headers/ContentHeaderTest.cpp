#include "sipobject/headers/KxSipAcceptHeader.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

constexpr auto kMedia = [](const auto& header) {
    return joined({header.getType(), header.getSubType(), header.getParameters()->getString()});
};

constexpr auto kRange = [](const auto& header) { return kMedia(header).append("|").append(header.getQValue().view()); };

constexpr const char* kInvalid = "KxSipParseError: Invalid Accept header";

} // namespace

TEST(ContentHeaderTest, ContentLengthTakesWhatDigitsThereAre) {
    expectRows<KxSipContentLengthHeader>(
        [](const auto& header) { return std::to_string(header.getContentLength()); },
        {
            {"Content-Length: 0", "0", "Content-Length: 0"},
            {"l: 0042 bytes", "42", "l: 42"},
            {"Content-Length: 4294967295", "4294967295", "Content-Length: 4294967295"},
            {"Content-Length: 4294967296", "4294967295", "Content-Length: 4294967295"},
            {"Content-Length: " + std::string(1000, '9'), "4294967295", "Content-Length: 4294967295"},
            {"Content-Length: -5", "0", "Content-Length: 0"},
            {"Content-Length: x", "0", "Content-Length: 0"},
            {"l: 1\r\n 2, 7", "12 & 7", "l: 12 & Content-Length: 7"},
        });
}

TEST(ContentHeaderTest, ContentTypeIsTypeSubtypeAndParameters) {
    expectRows<KxSipContentTypeHeader>(
        kMedia, {
                    {"Content-Type: application/sdp", "application|sdp|", "Content-Type: application/sdp"},
                    {"c: application/sdp", "application|sdp|", "c: application/sdp"},
                    {"Content-Type: text / plain ;charset=utf-8", "text|plain|charset=utf-8",
                     "Content-Type: text/plain;charset=utf-8"},
                    {"c: a/b;x;; Y = 1 ;=z;X=", "a|b|x;Y=1;=z", "c: a/b;x;Y=1;=z"},
                    {"c: a/b;x=1;y;X=2", "a|b|x=2;y", "c: a/b;x=2;y"},
                    {"c: a/b;x=\"1;\\\";2\";y", "a|b|x=\"1;\\\";2\";y", "c: a/b;x=\"1;\\\";2\";y"},
                    {"c: a/b;x=\"1;y", "a|b|x=\"1;y", "c: a/b;x=\"1;y"},
                    {"c: a/b;", "a|b|", "c: a/b"},
                    {"c: a/b (c);x", "a|b|", "c: a/b"},
                    {"c: a/b/c;x", "a|b|", "c: a/b"},
                    {"c: a,b/c", "a,b|c|", "c: a,b/c"},
                    // a comma ends the parameters even between quotes
                    {"c: a/b;x=\"1,2/3\"", "a|b|x=\"1 & 2|3|", "c: a/b;x=\"1 & Content-Type: 2/3"},
                    {"c: a/b;x=\"1,2\"", "", kInvalid},
                    {"Content-Type: /plain", "", kInvalid},
                    {"Content-Type: text/", "", kInvalid},
                    {"Content-Type: text/;x=1", "", kInvalid},
                    {"Content-Type: text", "", kInvalid},
                    {"Content-Type: text;a=b/\"c\"", "", kInvalid},
                });
}

TEST(ContentHeaderTest, AcceptIsAChainOfMediaRanges) {
    expectRows<KxSipAcceptHeader>(kRange, {
                                              {"Accept: application/sdp;level=1, text / *;q=0.5;a=\"b;c\"",
                                               "application|sdp|level=1| & text|*|q=0.5;a=\"b;c\"|0.5",
                                               "Accept: application/sdp;level=1 & Accept: text/*;q=0.5;a=\"b;c\""},
                                              {"Accept: a/b, c", "", kInvalid},
                                              {"Accept: ;q=1", "", kInvalid},
                                          });
}

TEST(ContentHeaderTest, MediaTypesFromTextAreSplitAtTheFirstSlash) {
    const struct {
        const char* text;
        const char* type;
        const char* subType;
        const char* whole;
    } rows[] = {{"multipart/mixed/x", "multipart", "mixed/x", "multipart/mixed/x"},
                {" a / b ", " a ", " b ", " a / b "},
                {"text", "text", "", "text/"},
                {"/x", "", "x", "/x"},
                {nullptr, "", "", "/"}};
    for (const auto& row : rows) {
        const KxHandle<KxSipContentTypeHeader> header(new KxSipContentTypeHeader(row.text));
        EXPECT_EQ(header->getType(), row.type);
        EXPECT_EQ(header->getSubType(), row.subType);
        EXPECT_EQ(header->getMediaType(), row.whole);
        EXPECT_EQ(linesOf(*header), std::string("Content-Type: ") + row.whole);
    }
}

TEST(ContentHeaderTest, ACopyHasParametersOfItsOwn) {
    const KxHandle<KxSipContentTypeHeader> header(new KxSipContentTypeHeader("a", "b"));
    header->setParameter("x", KxString("1"));
    const KxHandle<KxSipContentTypeHeader> copy(new KxSipContentTypeHeader(*header));
    copy->setParameter("X", KxString("2"));
    header->getParameters()->setValue("y", KxString(""));
    EXPECT_EQ(linesOf(*header), "Content-Type: a/b;x=1;y");
    EXPECT_EQ(linesOf(*copy), "Content-Type: a/b;x=2");
    copy->removeParameter("x");
    EXPECT_EQ(linesOf(*copy), "Content-Type: a/b");
}
