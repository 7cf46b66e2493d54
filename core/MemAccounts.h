#pragma once

#include "core/CoreApi.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace Oskan {

/** The memory that is allocated under an account and not yet freed. */
struct MemUsage {
    std::int64_t liveObjects = 0;
    std::int64_t liveBytes = 0; ///< Size of the blocks, which are a little larger than what was asked for.
};

struct MemAccountUsage {
    std::string_view name;
    MemUsage usage;
};

/** The accounts of the process. Every thread counts its own blocks, and the sums are computed on request. They are
    exact when no other thread allocates or frees at that time, and approximate otherwise. */
class KX_CORE_API MemAccounts {
public:
    /** Zeros for a name under which nothing was ever allocated. */
    static MemUsage sGetUsage(std::string_view name);
    /** All accounts that were ever used, in order of first use. */
    static std::vector<MemAccountUsage> sList();
};

} // namespace Oskan
