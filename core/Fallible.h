#pragma once

#include "core/FallibleBase.h"

#include <utility>

namespace Oskan {

/** A value that may be absent. T must be default-constructible. */
template <class T>
class Fallible : public FallibleBase {
public:
    /** Makes an invalid one, which has no value. */
    constexpr Fallible() : FallibleBase(false) {}
    constexpr Fallible(T value) : FallibleBase(true), m_value(std::move(value)) {}

    /** Returns the value. To read an invalid one is a fault of the caller: it is reported, and the process aborts. */
    constexpr const T& get() const {
        if (!isValid()) [[unlikely]] {
            assertUsedInInvalidStateErr();
        }
        return m_value;
    }

private:
    T m_value{};
};

} // namespace Oskan
