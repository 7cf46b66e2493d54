#pragma once

#include "tests/sipobject/support/Grammar.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

/** Reports a broken law with the two texts that differ, and aborts. */
[[noreturn]] inline void fail(const char* law, std::string_view first, std::string_view second) {
    const auto show = [](const char* name, std::string_view text) {
        std::fprintf(stderr, "---- %s: ", name);
        for (const char c : text) {
            const bool isText = (c >= ' ' && c <= '~') || c == '\n';
            std::fprintf(stderr, isText ? "%c" : "\\x%02x", isText ? c : static_cast<unsigned char>(c));
        }
        std::fputc('\n', stderr);
    };
    std::fprintf(stderr, "broken: %s\n", law);
    show("first", first);
    show("second", second);
    std::abort();
}

/** Reports the law as broken unless both are the same. */
inline void same(const char* law, std::string_view first, std::string_view second) {
    if (first != second) {
        fail(law, first, second);
    }
}

/** Whether the object is of exactly this class. */
template <class T, class Object>
bool isExactly(const Object& object) {
    return typeid(object) == typeid(T);
}

inline bool hasAnyOf(std::string_view text, std::string_view characters) {
    return text.find_first_of(characters) != std::string_view::npos;
}

inline bool hasOddQuotes(std::string_view text) {
    return std::count(text.begin(), text.end(), '"') % 2 != 0;
}

/** The bytes in a block of exactly their size, so that a sanitizer sees an overrun by one byte. */
class Block {
public:
    explicit Block(std::string_view text) : m_bytes(new char[text.size()]), m_size(text.size()) {
        text.copy(m_bytes.get(), m_size);
    }
    Block(const std::uint8_t* data, std::size_t size) : Block({reinterpret_cast<const char*>(data), size}) {}
    std::string_view view() const { return {m_bytes.get(), m_size}; }

private:
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size;
};

/** Delivers one byte at a time, which no stream of the library does. */
class Dribble final : public KxInputStream {
public:
    explicit Dribble(std::string_view text) : m_left(text) {}

protected:
    std::size_t readSome(char* buffer, std::size_t) override {
        const std::size_t count = m_left.copy(buffer, 1);
        m_left.remove_prefix(count);
        return count;
    }

private:
    std::string_view m_left;
};

/** Reads the rest of a stream. */
inline std::string restOf(KxInputStream& in) {
    std::string rest;
    for (int c = in.read(); c >= 0; c = in.read()) {
        rest += static_cast<char>(c);
    }
    return rest;
}

/** Has no window, so every piece goes through writeBeyondWindow. */
class Pieces final : public KxOutputStream {
public:
    std::string text;
    int flushes = 0;
    void flush() override { ++flushes; }

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override { text.append(bytes, count); }
};

template <class T>
void writeTo(KxOutputStream& out, const T& object) {
    if constexpr (requires { object.serialize(out); }) {
        object.serialize(out);
    } else {
        object.display(out, false);
    }
}

/** The text that the object writes. */
template <class T>
std::string written(const T& object) {
    KxByteArrayOutputStream out(16);
    writeTo(out, object);
    return std::string(out.view());
}

/** Checks that a copy is written as its original, and that every stream gets the same bytes and is flushed `flushes`
    times. */
template <class T>
void checkWriting(const T& object, std::string_view text, int flushes = 0) {
    const KxHandle<T> copy(static_cast<T*>(object.clone()));
    same("a copy is of its original's class", typeid(object).name(), typeid(*copy).name());
    same("a copy is written as its original", text, written(*copy));
    Pieces pieces;
    writeTo(pieces, object);
    same("every stream gets the same bytes", text, pieces.text);
    if (pieces.flushes != flushes) {
        fail("streams are flushed as often as they should be", text, std::to_string(pieces.flushes));
    }
    KxByteArrayOutputStream out;
    writeTo(out, object);
    if (out.size() != text.size()) {
        fail("what is written is as long as it says", text, out.view());
    }
    same("bytes are handed out as they were written", text, out.toByteArray()->view());
}

/** What f returns or, if it throws, "! " and the message of the exception. */
template <class F>
std::string outcomeOf(F f) {
    try {
        return f();
    } catch (const KxHandle<KxException>& failure) {
        return std::string("! ").append(failure->getExceptionMessage().view());
    }
}
