#include "core/MemAccount.h"
#include "core/MemAccounts.h"

#include "LogCapture.h"

#include <cstdlib>
#include <deque>
#include <iostream>

using MemAccountDeathTest = DeathTest; // in its own process, since accounts are never removed

/** The names of the accounts that have `blocks` blocks in use. */
static std::string accountsOf(std::int64_t blocks) {
    std::string names;
    for (const Oskan::MemAccountUsage& each : Oskan::MemAccounts::sList()) {
        names.append(each.usage.liveObjects == blocks ? each.name : "").append(" ");
    }
    return names.substr(names.find_first_not_of(' '));
}

/** Uses 100 accounts in a table of 63, and returns whether they were counted correctly. */
static std::string useManyAccounts() {
    std::deque<std::string> names;
    std::deque<Oskan::MemAccount> accounts;
    std::deque<void*> blocks;
    const std::size_t room = 62 - Oskan::MemAccounts::sList().size(); // the last one is for all others
    std::string expected;
    for (std::size_t i = 0; i < 100; ++i) {
        accounts.emplace_back(names.emplace_back("many." + std::to_string(i)).c_str());
        for (const std::size_t size : {16U, 24U, 9000U}) {
            blocks.push_back(accounts.back().allocate(size));
        }
        expected += i < room ? names.back() + " " : "";
    }
    if (accountsOf(3) != expected + " " ||
        Oskan::MemAccounts::sGetUsage("(other accounts)").liveObjects != static_cast<std::int64_t>(3 * (100 - room))) {
        return accountsOf(3);
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        accounts[i / 3].deallocate(blocks[i]);
    }
    return Oskan::MemAccounts::sGetUsage("(other accounts)").liveBytes == 0 ? "counted" : "not given back";
}

TEST_F(MemAccountDeathTest, AccountsBeyondTheTableAreCountedTogether) {
    EXPECT_EXIT((std::cerr << useManyAccounts(), std::_Exit(0)), testing::ExitedWithCode(0), "^counted$");
}
