#include "tests/util/Streams.h"

#include "util/KxByteArrayOutputStream.h"

#include <climits>

using namespace std::string_view_literals;

namespace {

/** Has no window: gets every piece as it was written. */
class PlainSink final : public KxOutputStream {
public:
    std::string bytes;

protected:
    void writeBeyondWindow(const char* from, std::size_t count) override { bytes.append(from, count); }
};

/** Reads, peeks, marks and resets at random, and compares with a position in the text. */
void expectFollows(KxInputStream&& in, std::string_view text) {
    Dice dice;
    std::size_t at = 0;
    std::size_t marked = SIZE_MAX;
    std::size_t limit = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::size_t wanted = dice(dice(20) == 0 ? 2000 : 40);
        const std::string next(text.substr(at, wanted));
        std::string buffer(3 + wanted, '?');
        switch (dice(7)) {
        case 0:
            ASSERT_EQ(in.peek(), at < text.size() ? static_cast<unsigned char>(text[at]) : -1);
            ASSERT_EQ(in.read(), at < text.size() ? static_cast<unsigned char>(text[at++]) : -1);
            break;
        case 1:
            ASSERT_EQ(in.skip(wanted), next.size());
            at += next.size();
            break;
        case 2:
            ASSERT_EQ(in.read(buffer.data(), 3, wanted), next.size());
            ASSERT_EQ(buffer, "???" + next + std::string(wanted - next.size(), '?'));
            at += next.size();
            break;
        case 3:
            limit = dice(2) == 0 ? KxInputStream::kUnlimited : wanted;
            in.mark(limit);
            marked = in.markSupported() ? at : SIZE_MAX;
            break;
        case 4:
        case 5:
            if (in.reset()) {
                ASSERT_NE(marked, SIZE_MAX);
                at = marked;
            } else {
                ASSERT_TRUE(marked == SIZE_MAX || at - marked > limit);
                marked = SIZE_MAX;
            }
            break;
        default:
            in.extendWindow();
        }
        ASSERT_EQ(in.available(), text.size() - at);
        ASSERT_EQ(in.window(), text.substr(at, in.window().size()));
    }
}

} // namespace

TEST(InputStreamTest, FollowsEveryWayOfReading) {
    for (const std::size_t length : {0U, 1U, 2U, 1024U, 1025U, 9000U}) {
        const HeapText text(Dice().text("abcdefgh\0\xFF\r\n"sv, length));
        expectFollows(KxByteArrayInputStream(text.view()), text.view());
        for (const std::size_t step : {1U, 3U, 1000U, 9000U}) {
            SCOPED_TRACE(std::to_string(length) + " bytes, " + std::to_string(step) + " at a time");
            expectFollows(DribblingStream(text.view(), step), text.view());
            expectFollows(DribblingStream(text.view(), step, false), text.view());
        }
    }
}

TEST(InputStreamTest, ReadsThePartOfAnArrayThatThereIs) {
    const auto bytes = KxByteArray::sCreate("0123456789");
    const std::tuple<std::size_t, std::size_t, std::string_view> rows[] = {
        {3, 4, "3456"}, {9, 5, "9"}, {11, 1, ""}, {8, SIZE_MAX, "89"}};
    for (const auto& [offset, length, expected] : rows) {
        expectFollows(KxByteArrayInputStream(bytes, offset, length), expected);
    }
    expectFollows(KxByteArrayInputStream(KxHandle<KxByteArray>()), "");
    expectFollows(KxByteArrayInputStream(KxByteArray::sCreate("kept alive")), "kept alive");
}

TEST(InputStreamTest, StandsAsBeforeWhenItsSourceFails) {
    const std::string text = Dice().text("abcdef", 2100);
    std::string buffer(2100, '?');
    for (const std::size_t failAt : {0U, 1U, 2U, 1023U, 1024U, 1025U, 2048U, 2099U}) {
        DribblingStream marked(text, 3, true, failAt);
        marked.mark();
        EXPECT_THROW(marked.read(buffer.data(), 0, 2100), KxHandle<KxException>);
        EXPECT_TRUE(marked.reset());
        EXPECT_EQ(readRest(marked), text) << failAt;
        DribblingStream lookedAhead(text, 3, false, failAt);
        EXPECT_THROW(while (lookedAhead.extendWindow()){}, KxHandle<KxException>);
        EXPECT_EQ(lookedAhead.window(), text.substr(0, failAt));
        EXPECT_EQ(readRest(lookedAhead), text) << failAt;
    }
}

TEST(InputStreamTest, FillLineShowsTheFoldedLineAndTakesNothing) {
    for (const std::string line : {"\n", "a\r b\rc\n", "ab\r\n\tcd\r\n", "a\n b\n\tc\n"}) {
        const auto read = [&](KxInputStream& in) {
            const std::size_t length = in.fillLine();
            EXPECT_EQ(length, in.isWhole() ? line.size() + 7 : line.size());
            return std::string(in.window().substr(0, line.size()));
        };
        const std::string text = line + "\r\nnext\n";
        EXPECT_EQ(readEveryWay(text, read), line + "@" + text);
    }
}

TEST(OutputStreamTest, EverySinkGetsTheSameBytes) {
    static constinit const KxConstString kConstant("eleven char");
    constexpr std::uint32_t kNumbers[] = {0,    9,     10,    99,     100,       999,     1000,
                                          9999, 10000, 99999, 100000, 999999999, 1000000, UINT_MAX};
    for (const std::size_t capacity : {0U, 1U, 15U, 16U, 17U, 1000U}) {
        PlainSink plain;
        KxByteArrayOutputStream memory(capacity);
        std::string expected;
        for (std::size_t length = 0; length <= 70; ++length) {
            const std::uint32_t number = kNumbers[length % std::size(kNumbers)];
            const HeapText piece(Dice().text("abcdefghijklmn\0"sv, length));
            for (KxOutputStream* const out :
                 {static_cast<KxOutputStream*>(&plain), static_cast<KxOutputStream*>(&memory)}) {
                out->write(piece.view());
                out->write(piece.view().data(), length / 2, length - length / 2);
                *out << KxString(piece.view()) << 'c' << static_cast<const char*>(nullptr) << KxString() << endl;
                out->writeAll(KxString(piece.view()), '=', number, KxString(), piece.view());
                out->writeAll(KxOutputStream::SeparateNumber{length % 3 == 0, ':', number}, kConstant);
            }
            const std::string digits = std::to_string(number);
            expected.append(piece.view()).append(piece.view().substr(length / 2)).append(piece.view()).append("c\r\n");
            expected.append(piece.view()).append("=" + digits).append(piece.view());
            expected.append(length % 3 == 0 ? ":" + digits : "").append("eleven char");
        }
        EXPECT_EQ(plain.bytes, expected);
        EXPECT_EQ(memory.view(), expected);
    }
    PlainSink numbers;
    numbers << 0 << ' ' << INT_MIN << ' ' << INT_MAX << ' ' << UINT_MAX << ' ' << LONG_MIN << ' ' << ULONG_MAX
            << '\xFF';
    EXPECT_EQ(numbers.bytes, "0 -2147483648 2147483647 4294967295 -9223372036854775808 18446744073709551615\xFF");
}

TEST(OutputStreamTest, ArraysHandedOutStayAsTheyAre) {
    for (const std::size_t capacity : {0U, 3U, 100U}) {
        KxByteArrayOutputStream out(capacity);
        out << "abc";
        const KxHandle<KxByteArray> first = out.toByteArray();
        out << "d" << out.view(); // its own bytes
        const KxHandle<KxByteArray> second = out.toByteArray();
        out.clear();
        out << "xy" << 7;
        EXPECT_EQ(first->view(), "abc");
        EXPECT_EQ(second->view(), "abcdabcd");
        EXPECT_EQ(second->data()[8], '\0');
        EXPECT_EQ(out.view(), "xy7");
    }
}
