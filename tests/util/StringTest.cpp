#include "tests/util/Streams.h"

#include "core/MemAllocatorFaults.h"
#include "util/KxString.h"

#include <new>

using namespace std::string_literals;
using namespace std::string_view_literals;

static KxHandle<KxStringBuffer> bufferOf(std::string_view text) {
    return KxStringBuffer::sCreate(text.data(), text.size());
}

/** The buffer holds exactly this text and a NUL after it. */
static void expectText(const KxStringBuffer& buffer, std::string_view expected) {
    EXPECT_EQ(buffer.view(), expected);
    EXPECT_EQ(buffer.c_str()[expected.size()], '\0');
    EXPECT_GE(buffer.capacity(), expected.size());
}

TEST(StringTest, ComparesByteByByteAndFoldsAsciiOnly) {
    const std::tuple<KxString, KxString, int, int> rows[] = {
        // a, b, order, order without case
        {KxString(), KxString(""), 0, 0},
        {KxString("ab"), KxString("abc"), -1, -1},
        {KxString("INVITE"), KxString("invite"), -1, 0},
        {KxString("["), KxString("A"), 1, -1},        // is between the two cases
        {KxString("\xC9"), KxString("z"), 1, 1},      // unsigned
        {KxString("\xC9"), KxString("\xE9"), -1, -1}, // letters in Latin-1, not in ASCII
        {KxString("a\0B"sv), KxString("A\0b"sv), 1, 0},
    };
    for (const auto& [a, b, order, orderNoCase] : rows) {
        SCOPED_TRACE(testing::PrintToString(a.view()) + " and " + testing::PrintToString(b.view()));
        EXPECT_EQ(std::clamp(a.compareWith(b), -1, 1), order);
        EXPECT_EQ(std::clamp(b.compareWith(a), -1, 1), -order);
        EXPECT_EQ(std::clamp(a.compareNoCase(b), -1, 1), orderNoCase);
        EXPECT_EQ(std::clamp(b.compareNoCase(a), -1, 1), -orderNoCase);
        EXPECT_EQ(a.equalsNoCase(b), orderNoCase == 0);
        EXPECT_EQ(a == b, order == 0);
        EXPECT_EQ(a.lower() == b.lower() && a.upper() == b.upper(), orderNoCase == 0);
    }
    EXPECT_EQ(KxString(), static_cast<const char*>(nullptr));
    EXPECT_EQ(bufferOf("")->compareWith(static_cast<const char*>(nullptr)), 0);
    const auto buffer = bufferOf("aZ@[`{\xE9\xC9\0mM"sv);
    EXPECT_GT(buffer->compareNoCase("AZ@[`{\xE9\xC9"), 0);
    buffer->toUpper();
    expectText(*buffer, "AZ@[`{\xE9\xC9\0MM"sv);
    buffer->toLower();
    expectText(*buffer, "az@[`{\xE9\xC9\0mm"sv);
}

TEST(StringTest, SearchesCutsAndTrimsUpToEveryBoundary) {
    constexpr std::string_view kText = "abc\0abc"sv;
    const KxString string(kText);
    const auto buffer = bufferOf(kText);
    for (const std::size_t start : {0U, 1U, 6U, 7U, 8U, 1000U}) {
        for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{7}, SIZE_MAX}) {
            const std::string_view expected = start > 7 ? "" : kText.substr(start, length);
            EXPECT_EQ(string.substr(start, length), expected) << start << ' ' << length;
            expectText(*buffer->substr(start, length), expected);
        }
        for (const char* const text : {"c", "", "abc", "abcd", "B", "ca"}) {
            const auto expected = static_cast<std::ptrdiff_t>(kText.find(text, start)); // npos is -1
            EXPECT_EQ(string.indexOf(text, start), expected) << text << ' ' << start;
            EXPECT_EQ(buffer->indexOf(text, start), expected) << text << ' ' << start;
        }
    }
    for (const std::string_view kept : {""sv, "a"sv, "a b"sv, "\0 a \0"sv, "\xA0\x85"sv}) {
        for (const std::string_view blank : {""sv, " "sv, " \t\r\n\v\f"sv}) {
            const std::string text = std::string(blank).append(kept).append(blank);
            const auto trimmed = bufferOf(text);
            trimmed->trim();
            expectText(*trimmed, kept);
        }
    }
}

TEST(StringTest, WordsShareOneConstant) {
    for (const std::string_view text : {"INVITE"sv, "0"sv, "+sip.instance"sv, "INVITe"sv, "INVIT"sv, "INVITE\0"sv,
                                        "+sip.inbtance"sv, "simple-message-summaries-of-any"sv}) {
        const HeapText bytes(text);
        const KxString string(bytes.view());
        const bool shared = text == "INVITE" || text == "0" || text == "+sip.instance";
        EXPECT_EQ(string.sharesWith(KxString(text)), shared) << text;
        expectText(*string.getBuffer(), text);
    }
}

TEST(StringTest, ChangesACopyOfAWord) {
    constinit static const KxConstString s_constant{"udp"};
    static constexpr std::string_view kRead = "xyz;";
    const std::function<void(KxStringBuffer&)> changes[] = {
        [](KxStringBuffer& b) { b.assign("other"); },
        [](KxStringBuffer& b) { b.assign("o", 1); },
        [](KxStringBuffer& b) { b.assign(nullptr); },
        [](KxStringBuffer& b) { b.append("+", 1); },
        [](KxStringBuffer& b) { b.append(b); },
        [](KxStringBuffer& b) { b.trim(); },
        [](KxStringBuffer& b) { b.toUpper(); },
        [](KxStringBuffer& b) { b.toLower(); },
        [](KxStringBuffer& b) { *b.lockBuffer(1) = 'x'; },
        [](KxStringBuffer& b) { b.releaseBuffer(1); },
        [](KxStringBuffer& b) { b.read(*std::make_unique<KxByteArrayInputStream>(kRead), 4); },
        [](KxStringBuffer& b) { b.parse(*std::make_unique<KxByteArrayInputStream>(kRead), ";"); },
    };
    for (const auto& change : changes) {
        const auto expected = bufferOf("udp");
        change(*expected);
        KxString word("udp");
        const KxString other(word);
        change(*word.getBuffer());
        change(*other.getBuffer());
        change(*s_constant.getBuffer());
        change(*KxString("udp").getBuffer());
        EXPECT_EQ(word, expected->view());
        for (const KxString& untouched : {other, KxString("udp"), KxString(s_constant.view())}) {
            EXPECT_EQ(untouched, "udp");
        }
    }
}

TEST(StringTest, AppendsToACopyWhereItIsShared) {
    for (const KxString& original : {KxString(), KxString(""), KxString("INVITE"), KxString("of its\0 own"sv)}) {
        const std::string before(original.view());
        KxString changed(original);
        changed.append("+").append("");
        const KxStringBuffer* const own = changed.getBuffer().get();
        for (int i = 0; i < 50; ++i) {
            changed += "-";
        }
        EXPECT_EQ(changed.getBuffer().get(), own); // the buffer is not shared, so it grows in place
        EXPECT_EQ(changed, before + "+" + std::string(50, '-'));
        KxString twice(original);
        twice.append(twice).append(twice);
        EXPECT_EQ(twice, before + before + before + before);
        EXPECT_EQ(original, before);
    }
    KxString accompanied(KxHandle<KxStringBuffer>(bufferOf("text").get(), bufferOf("beside").get()));
    accompanied.append(accompanied);
    EXPECT_EQ(accompanied, "texttext");
}

TEST(StringBufferTest, GrowsBeyondItsBlockAndStaysTheSameObject) {
    for (const std::size_t length : {0U, 1U, 10U, 11U, 12U, 20U, 100U}) { // within its block, beyond it
        for (std::size_t from = 0; from <= length; from += 5) {
            std::string expected = Dice().text("abcdef\0"sv, length);
            const auto buffer = bufferOf(expected);
            const KxString sharing(buffer);
            for (int i = 0; i < 4; ++i) {
                buffer->append(buffer->c_str() + from, buffer->length() - from); // its own text
                expectText(*buffer, expected += expected.substr(from));
            }
            buffer->assign(buffer->c_str() + from, length - from);
            buffer->append(*bufferOf("xyz"));
            EXPECT_EQ(sharing, expected.substr(from, length - from) + "xyz");
        }
    }
    const auto buffer = KxStringBuffer::sCreate(nullptr, 3);
    expectText(*buffer, "\0\0\0"sv);
    std::fill_n(buffer->lockBuffer(5000) + 3, 4997, 'z');
    buffer->releaseBuffer(5000);
    expectText(*buffer, "\0\0\0"s + std::string(4997, 'z'));
    buffer->releaseBuffer(SIZE_MAX);
    EXPECT_EQ(buffer->length(), buffer->capacity());
    buffer->assign(nullptr);
    expectText(*buffer, "");
}

TEST(StringBufferTest, StaysWhatItWasWhenThereIsNoRoom) {
    const auto buffer = bufferOf("text");
    const std::string larger(1000, 'x');
    for (const std::uint64_t n : {1U, 2U}) { // the copy, and the room
        Oskan::MemAllocatorFaults::sFailAfter(n);
        EXPECT_THROW(buffer->assign(larger.c_str()), std::bad_alloc);
    }
    Oskan::MemAllocatorFaults::sFailAfter(1);
    EXPECT_THROW(buffer->append(larger.data(), larger.size()), std::bad_alloc);
    EXPECT_THROW(buffer->append(larger.data(), std::size_t{1} << 31), KxHandle<KxException>);
    EXPECT_THROW(KxStringBuffer::sCreate(nullptr, std::size_t{1} << 32), KxHandle<KxException>);
    expectText(*buffer, "text");
}

TEST(StringBufferTest, ParsesAndReadsTheSameFromEveryStream) {
    const auto expectParsed = [](const std::string& text) {
        const std::string token = text.substr(std::min(text.find_first_not_of(" \t\r\n\v\f"), text.size()));
        const std::size_t end = std::min(token.find_first_of(";\n"), token.size());
        const auto parse = [](KxInputStream& in) {
            const auto buffer = bufferOf("what was here before");
            buffer->parse(in, ";\n");
            return std::string(buffer->view());
        };
        EXPECT_EQ(readEveryWay(text, parse), token.substr(0, end) + "@" + token.substr(end));
    };
    forEveryText(" \r\na;", 5, expectParsed);
    expectParsed("\t\v\f" + Dice().text("ab\0\xFF \r"sv, 4000) + ";z");
    const auto read = [](KxInputStream& in) {
        const auto buffer = bufferOf("before");
        buffer->read(in, 4);
        return std::string(buffer->view());
    };
    EXPECT_EQ(readEveryWay(" a\0;bc"sv, read), " a\0;@bc"s);
    EXPECT_EQ(readEveryWay("ab", read), "ab@");
}
