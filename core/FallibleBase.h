#pragma once

#include "core/CoreApi.h"

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

} // namespace Oskan
