#pragma once

#include "util/KxByteArrayInputStream.h"
#include "util/KxException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <initializer_list>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

/** A copy in a heap block of its exact size: the address sanitizer sees a read beyond its end. */
class HeapText {
public:
    explicit HeapText(std::string_view text) : m_block(new char[text.size()]), m_size(text.size()) {
        std::copy(text.begin(), text.end(), m_block.get());
    }
    std::string_view view() const { return {m_block.get(), m_size}; }

private:
    std::unique_ptr<char[]> m_block;
    std::size_t m_size;
};

/** Delivers a text a few bytes at a time, and fails once after `failAt` bytes. */
class DribblingStream final : public KxInputStream {
public:
    explicit DribblingStream(std::string_view text, std::size_t step, bool marks = true, std::size_t failAt = SIZE_MAX)
        : m_left(text), m_step(step), m_marks(marks), m_failAt(failAt) {}
    bool markSupported() const override { return m_marks; }

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override {
        if (std::exchange(m_failAt, m_failAt == 0 ? SIZE_MAX : m_failAt) == 0) {
            KxException::sThrow("connection lost");
        }
        const std::size_t count = m_left.copy(buffer, std::min({m_step, capacity, m_failAt}));
        m_left.remove_prefix(count);
        m_failAt -= m_failAt == SIZE_MAX ? 0 : count;
        return count;
    }
    std::size_t availableBeyondWindow() const override { return m_left.size(); }

private:
    std::string_view m_left;
    std::size_t m_step;
    bool m_marks;
    std::size_t m_failAt;
};

inline std::string readRest(KxInputStream& in) {
    std::string rest;
    for (int c = in.read(); c >= 0; c = in.read()) {
        rest += static_cast<char>(c);
    }
    return rest;
}

/** What the reader makes of a text, "@", and what it leaves unread. Slow streams must give the same as memory. */
template <class Reader>
std::string readEveryWay(std::string_view text, Reader reader) {
    const HeapText bytes(text);
    const auto outcome = [&](KxInputStream&& in) {
        std::string result = reader(in);
        return std::move(result) + "@" + readRest(in);
    };
    std::string expected = outcome(KxByteArrayInputStream(bytes.view()));
    EXPECT_EQ(outcome(DribblingStream(bytes.view(), 1)), expected) << testing::PrintToString(text);
    EXPECT_EQ(outcome(DribblingStream(bytes.view(), 3, false)), expected) << testing::PrintToString(text);
    return expected;
}

/** A text, what the reader makes of it, and what it leaves unread. */
struct ReadRow {
    std::string text;
    std::string outcome;
    std::string rest = "";
};

template <auto reader>
void expectReads(std::initializer_list<ReadRow> rows) {
    for (const ReadRow& row : rows) {
        EXPECT_EQ(readEveryWay(row.text, reader), row.outcome + "@" + row.rest) << testing::PrintToString(row.text);
    }
}

/** Calls f with every text of up to `longest` characters of the alphabet, until a test fails. */
template <class F>
void forEveryText(std::string_view alphabet, std::size_t longest, F f) {
    for (std::size_t length = 0, count = 1; length <= longest; ++length, count *= alphabet.size()) {
        for (std::size_t number = 0; number < count && !testing::Test::HasFailure(); ++number) {
            std::string text;
            for (std::size_t rest = number; text.size() < length; rest /= alphabet.size()) {
                text += alphabet[rest % alphabet.size()];
            }
            f(text);
        }
    }
}

inline std::string repeated(std::string_view text, std::size_t times) {
    std::string all;
    while (times-- != 0) {
        all += text;
    }
    return all;
}

/** Random numbers, the same in every run. */
struct Dice {
    std::size_t operator()(std::size_t sides) { return m_engine() % sides; }
    std::string text(std::string_view alphabet, std::size_t length) {
        std::string made(length, '\0');
        std::generate(made.begin(), made.end(), [&] { return alphabet[(*this)(alphabet.size())]; });
        return made;
    }
    std::mt19937 m_engine{20};
};
