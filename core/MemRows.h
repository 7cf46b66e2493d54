#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Oskan {

/** The table of account names; internal to this folder. An account's row number selects its cells in every thread's
    cache. Blocks that no cell counts (large blocks, and all blocks with KX_PLAIN_MALLOC) are counted in the row itself.
    Rows are never removed. When they run out, further accounts share the last one. */
class MemRows {
public:
    static constexpr std::size_t kRows = 64;

    /** The row of a name, added if there is none. Never 0. */
    static std::size_t sFindOrAdd(const char* name) noexcept;
    /** 0 for an unknown name. */
    static std::size_t sFind(std::string_view name) noexcept;
    /** Rows 1 to this number minus one are in use. */
    static std::size_t sCount() noexcept { return s_count.load(std::memory_order_acquire); }
    static const char* sName(std::size_t row) noexcept { return s_rows[row].name; }

    static void sCountBlock(std::size_t row, std::int64_t objects, std::int64_t bytes) noexcept {
        s_rows[row].objects.fetch_add(objects, std::memory_order_relaxed);
        s_rows[row].bytes.fetch_add(bytes, std::memory_order_relaxed);
    }
    static std::int64_t sObjects(std::size_t row) noexcept { return s_rows[row].objects.load(); }
    static std::int64_t sBytes(std::size_t row) noexcept { return s_rows[row].bytes.load(); }

private:
    struct Row {
        const char* name = nullptr;
        std::atomic<std::int64_t> objects{0};
        std::atomic<std::int64_t> bytes{0};
    };
    static std::array<Row, kRows> s_rows;
    static std::atomic<std::size_t> s_count;
};

} // namespace Oskan
