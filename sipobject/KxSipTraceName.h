#pragma once

#include "core/AceCleanupLogger.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

/** A string literal as a template argument. */
template <std::size_t N>
struct KxLiteral {
    constexpr KxLiteral(const char (&text)[N]) { std::copy_n(text, N, characters); }
    char characters[N];
};

template <class C, KxLiteral kOperation>
constexpr auto joinedTraceName() {
    constexpr std::size_t kClass = sizeof(C::kClassName) - 1;
    std::array<char, kClass + sizeof(kOperation.characters)> joined{};
    std::copy_n(kOperation.characters, sizeof(kOperation.characters),
                std::copy_n(C::kClassName, kClass, joined.begin()));
    return joined;
}

template <class C, KxLiteral kOperation>
inline constexpr auto KxTraceNameText __attribute__((visibility("hidden"))) = joinedTraceName<C, kOperation>();

/** The class name C::kClassName and the operation, joined at compile time, such as "KxSipViaHeader::doParse". */
template <class C, KxLiteral kOperation>
inline constexpr const char* KxTraceName = KxTraceNameText<C, kOperation>.data();

/** The logger of a class that has a kClassName. Its name is "tandril.kx." followed by kClassName. */
template <class C>
inline constinit Oskan::AceCleanupLogger KxClassLogger __attribute__((visibility("hidden"))){C::kClassName};
