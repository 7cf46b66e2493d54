#pragma once

#include "util/KxInputStream.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <typeinfo>

/** Reports a broken law with the two texts that differ, and ends. */
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

/** Whether the object is of exactly this class. */
template <class T, class Object>
bool isExactly(const Object& object) {
    return typeid(object) == typeid(T);
}

/** Delivers a byte at a time, as no stream of the library does. */
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
