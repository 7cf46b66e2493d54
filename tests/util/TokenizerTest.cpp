#include "tests/util/Streams.h"

#include "util/KxStreamTokenizer.h"

using namespace std::string_literals;
using namespace std::string_view_literals;
using Tokenizer = KxStreamTokenizer;

using Reader = std::string (*)(KxInputStream&);

static std::string textOf(const KxString& string) {
    EXPECT_FALSE(string.isNil());
    return std::string(string.view());
}

constexpr Reader kToken = [](KxInputStream& in) { return textOf(Tokenizer::sGetToken(in, "; \n")); };
constexpr Reader kLine = [](KxInputStream& in) { return textOf(Tokenizer::sGetLine(in)); };
constexpr Reader kUnsigned = [](KxInputStream& in) { return std::to_string(Tokenizer::sGetUnsigned(in)); };
constexpr Reader kQuote = [](KxInputStream& in) { return textOf(Tokenizer::sGetQuote(in)); };
constexpr Reader kWhite = [](KxInputStream& in) { return std::to_string(Tokenizer::sDiscardWhite(in)); };
constexpr Reader kDiscardLine = [](KxInputStream& in) { return Tokenizer::sDiscardLine(in), ""s; };
constexpr Reader kWord = [](KxInputStream& in) {
    KxString word;
    return in >> word, textOf(word);
};

/** Reads into a buffer of its exact size; a text that fits is marked so. */
template <auto kGet>
static auto inBuffer(std::size_t size) {
    return [size](KxInputStream& in) {
        const std::unique_ptr<char[]> buffer(new char[size]);
        std::fill_n(buffer.get(), size, '?');
        const bool fits = kGet(in, buffer.get(), size);
        return (size == 0 ? "" : buffer.get()) + (fits ? " fits"s : ""s);
    };
}

constexpr KxCharSet kSemicolon(";");
constexpr auto kGet = [](KxInputStream& in, char* to, std::size_t n) {
    return Tokenizer::sGetToken(in, kSemicolon, to, n);
};
constexpr auto kPeek = [](KxInputStream& in, char* to, std::size_t n) {
    return Tokenizer::sPeekToken(in, kSemicolon, to, n);
};
constexpr auto kGetLine = [](KxInputStream& in, char* to, std::size_t n) { return Tokenizer::sGetLine(in, to, n); };

TEST(TokenizerTest, ReadsAndLeavesTheRest) {
    const std::tuple<Reader, std::string_view, std::string_view> rows[] = {
        {kToken, " \t ab;c", "ab@;c"},
        {kToken, "\ta\0b\xFF"sv, "a\0b\xFF@"sv},
        {kToken, "\r\na", "\r@\na"}, // a line end is no white space
        {kLine, " \t abc \r\nrest", "abc @rest"},
        {kLine, "a\rb\r\r\n\nc", "a\rb\r@\nc"},
        {kUnsigned, " \t42x", "42@x"},
        {kUnsigned, " -1", "0@-1"},
        {kUnsigned, "4294967296 ", "4294967295@ "},
        {kUnsigned, "18446744073709551617a", "4294967295@a"}, // 1 in 64 bits
        {kQuote, " \"a\\\"b\\\\\\c\" d", "a\"b\\c@ d"},
        {kQuote, "a\"b\"", "@a\"b\""},
        {kQuote, "\"a;\r\n\0b"sv, "a;\r\n\0b@"sv},
        {kQuote, "\"a\\", "a\\@"},
        {kWhite, " \t\t x", "120@x"},
        {kWhite, "\xFF", "255@\xFF"},
        {kWhite, "  ", "-1@"},
        {kDiscardLine, "a\rb\nc", "@c"},
        {kWord, " \tab\r\nc", "ab@\r\nc"},
    };
    for (const auto& [reader, text, outcome] : rows) {
        EXPECT_EQ(readEveryWay(text, reader), outcome) << text;
    }
    const std::string longText = Dice().text("ab c", 5000);
    EXPECT_EQ(readEveryWay("\"" + longText + "\"x", kQuote), longText + "@x");
    EXPECT_EQ(readEveryWay("x" + longText + "\r\nx", kLine), "x" + longText + "@x");
}

TEST(TokenizerTest, BuffersHoldWhatFits) {
    for (const std::size_t length : {1U, 2U, 5U}) {
        for (const std::size_t size : {std::size_t{0}, std::size_t{1}, length, length + 1, length + 2}) {
            SCOPED_TRACE(std::to_string(length) + " characters, room for " + std::to_string(size));
            const std::string token(length, 'x');
            const std::size_t kept = std::min(length, std::max<std::size_t>(size, 1) - 1);
            const std::string result = std::string(kept, 'x') + (length < size ? " fits@" : "@");
            for (const std::string end : {";r", ""}) { // the end of the text ends it too
                EXPECT_EQ(readEveryWay(" " + token + end, inBuffer<kGet>(size)), result + token.substr(kept) + end);
                EXPECT_EQ(readEveryWay(" " + token + end, inBuffer<kPeek>(size)), result + " " + token + end);
            }
            EXPECT_EQ(readEveryWay(" " + token + "\r\nr", inBuffer<kGetLine>(size)), result + "r");
            EXPECT_EQ(readEveryWay(" ", inBuffer<kGet>(size)), "@"); // nothing there: false, and an empty text
            EXPECT_EQ(readEveryWay("", inBuffer<kGetLine>(size)), "@");
        }
    }
}

TEST(TokenizerTest, PeekingLeavesTheCallersMark) {
    const std::string text = "ab  " + std::string(2000, 'x') + ";";
    DribblingStream in(text, 3);
    in.read();
    in.mark();
    in.read();
    char token[2001];
    EXPECT_TRUE(Tokenizer::sPeekToken(in, kSemicolon, token, sizeof token));
    EXPECT_EQ(token, text.substr(4, 2000));
    EXPECT_TRUE(in.reset());
    EXPECT_EQ(in.read(), 'b');
}
