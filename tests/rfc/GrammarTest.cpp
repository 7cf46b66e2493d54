#include "tests/sipobject/support/MessageSupport.h"

using Choice = KxSipGrammar::Choice;

static void choose(Choice choice) {
    std::cerr << outcomeOf([choice] { KxSipGrammar::sChoose(choice); }) << (isRFC() ? "RFC " : "classic ");
}

/** In a process of its own, in which nothing was read before. */
TEST(GrammarTest, IsChosenOnceBeforeTheFirstMessage) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [] {
        std::cerr << (isRFC() ? "configured " : "");
        choose(Choice::Classic);
        choose(Choice::RFC);
        readMessage("OPTIONS sip:b SIP/2.0\r\n" + requiredHeaders("OPTIONS") + "\r\n");
        choose(Choice::RFC);
        choose(Choice::Classic);
        std::exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0),
                "configured classic RFC RFC KxException: The grammar can't be chosen once a message has been readRFC");
}
