#pragma once

#include "core/CoreApi.h"

#include <utility>

namespace Oskan {

/** The part of Fallible that does not depend on the type: whether there is a value, and the report when there is
    none. */
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

/** A value that may be absent. T must be default-constructible. */
template <class T>
class Fallible : public FallibleBase {
public:
    /** Makes an invalid one, which has no value. */
    constexpr Fallible() : FallibleBase(false) {}
    constexpr Fallible(T value) : FallibleBase(true), m_value(std::move(value)) {}

    /** Returns the value. To read an invalid one is a fault of the caller: it is reported, and the process aborts. */
    constexpr const T& get() const {
        if (!isValid()) [[unlikely]]
            assertUsedInInvalidStateErr();
        return m_value;
    }

private:
    T m_value{};
};

} // namespace Oskan
