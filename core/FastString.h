#pragma once

#include "core/FastStringBase.h"

#include <cstddef>

namespace Oskan {

/** Text that grows. A text of up to N characters is kept in the object; a longer one is on the heap, under the account
    "FastStringAccount". To be used by one thread at a time. */
template <std::size_t N>
class FastString : public FastStringBase {
    static_assert(N > 0);

public:
    FastString() noexcept : FastStringBase(m_inline, N) {}
    ~FastString() {
        if (m_onHeap) [[unlikely]] {
            freeHeap();
        }
    }

private:
    char m_inline[N + 1];
};

} // namespace Oskan
