#include "core/MemAccounts.h"

#include "core/MemPool.h"
#include "core/MemRows.h"

namespace Oskan {

namespace {

MemUsage usageOfRow(std::size_t row) {
    MemUsage usage = MemPool::sLive(row);
    usage.liveObjects += MemRows::sObjects(row);
    usage.liveBytes += MemRows::sBytes(row);
    return usage;
}

} // namespace

MemUsage MemAccounts::sGetUsage(std::string_view name) {
    const std::size_t row = MemRows::sFind(name);
    return row == 0 ? MemUsage{} : usageOfRow(row);
}

std::vector<MemAccountUsage> MemAccounts::sList() {
    std::vector<MemAccountUsage> list;
    for (std::size_t row = 1; row < MemRows::sCount(); ++row) {
        list.push_back({MemRows::sName(row), usageOfRow(row)});
    }
    return list;
}

} // namespace Oskan
