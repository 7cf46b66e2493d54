#include "core/MemAccount.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <iostream>
#include <string>

using Oskan::MemAccount;
using Oskan::MemAccounts;

namespace {

/** The accounts that are listed, as "name blocks", where the name begins so; and their sum. */
std::string listed(const std::string& prefix) {
    std::string list;
    for (const Oskan::MemAccountUsage& each : MemAccounts::sList()) {
        if (each.name.starts_with(prefix))
            list.append(each.name).append(" ").append(std::to_string(each.usage.liveObjects)).append("|");
    }
    return list;
}

/** More accounts than have a row each: the rest is counted together, and nothing is counted elsewhere. */
std::string useManyAccounts() {
    constexpr std::size_t kAccounts = 100;
    std::deque<std::string> names;
    std::deque<MemAccount> accounts;
    std::deque<void*> blocks;
    const std::size_t own = 63 - 1 - MemAccounts::sList().size(); // the last row is the others'
    std::string expected;
    for (std::size_t i = 0; i < kAccounts; ++i) {
        accounts.emplace_back(names.emplace_back("many." + std::to_string(i)).c_str());
        for (const std::size_t size : {16U, 9000U})
            blocks.push_back(accounts.back().allocate(size));
        expected += i < own ? names.back() + " 2|" : "";
    }
    const std::string others = "(other accounts) ";
    expected += others + std::to_string(2 * (kAccounts - own)) + "|";
    std::string counted = listed("many.") + listed("(");
    for (std::size_t i = 0; i < blocks.size(); ++i)
        accounts[i / 2].deallocate(blocks[i]);
    counted += listed("(");
    return counted == expected + others + "0|" && listed("many.0 ") == "" && listed("many.0").starts_with("many.0 0|")
               ? "as expected"
               : counted;
}

} // namespace

TEST(MemAccountTest, AccountsBeyondTheTableAreCountedTogether) {
    // a process of its own, since accounts are never taken away
    EXPECT_EXIT((std::cerr << useManyAccounts(), std::_Exit(0)), testing::ExitedWithCode(0), "^as expected$");
}
