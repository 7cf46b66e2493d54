#pragma once

#include "core/CoreApi.h"

#include <utility>

namespace Oskan {

/** What the fallible values of all types share: whether the value is there, and the report when it is not. */
class KX_CORE_API FallibleBase {
public:
    constexpr bool isValid() const noexcept { return m_valid; }

    /** Reports that an invalid value was read, and aborts. */
    [[noreturn, gnu::cold]] static void assertUsedInInvalidStateErr() noexcept;

protected:
    constexpr explicit FallibleBase(bool valid) noexcept : m_valid(valid) {}

private:
    bool m_valid;
};

/** A value that is there or not. T is default-constructible. */
template <class T>
class Fallible : public FallibleBase {
public:
    /** Invalid. */
    constexpr Fallible() : FallibleBase(false) {}
    constexpr Fallible(T value) : FallibleBase(true), m_value(std::move(value)) {}

    /** The value. Reading an invalid one is a fault of the caller, reported and fatal. */
    constexpr const T& get() const {
        if (!isValid()) [[unlikely]]
            assertUsedInInvalidStateErr();
        return m_value;
    }

private:
    T m_value{};
};

} // namespace Oskan
