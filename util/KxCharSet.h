#pragma once

#include "util/KxAscii.h"

#include <array>
#include <string_view>

/** A set of characters, made once (constexpr where the characters are known) and asked by table. */
class KxCharSet {
public:
    constexpr explicit KxCharSet(std::string_view characters) {
        for (const char c : characters) {
            m_has[static_cast<unsigned char>(c)] = true;
        }
    }

    constexpr bool contains(char c) const { return m_has[static_cast<unsigned char>(c)]; }

    constexpr KxCharSet operator|(const KxCharSet& other) const {
        KxCharSet both(*this);
        for (std::size_t i = 0; i < both.m_has.size(); ++i) {
            both.m_has[i] = both.m_has[i] || other.m_has[i];
        }
        return both;
    }

    /** The first character of [begin, end) that is in the set, or `end`. */
    constexpr const char* find(const char* begin, const char* end) const {
        while (begin != end && !contains(*begin)) {
            ++begin;
        }
        return begin;
    }

private:
    std::array<bool, 256> m_has{};
};
