#include "sipobject/KxSipGrammar.h"
#include "tests/sipobject/support/MessageSupport.h"

TEST(GrammarTest, IsChosenOnceBeforeTheFirstMessage) {
    EXPECT_EQ(KxSipGrammar::sChosen(), KxSipGrammar::Choice::RFC);
    KxSipGrammar::sChoose(KxSipGrammar::Choice::Classic);
    EXPECT_EQ(KxSipGrammar::sChosen(), KxSipGrammar::Choice::Classic);
    KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    readMessage("OPTIONS sip:b SIP/2.0\r\n" + requiredHeaders("OPTIONS") + "\r\n");
    EXPECT_EQ(outcomeOf([] { KxSipGrammar::sChoose(KxSipGrammar::Choice::Classic); }),
              "KxException: The grammar can't be chosen once a message has been read");
    KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    EXPECT_EQ(KxSipGrammar::sChosen(), KxSipGrammar::Choice::RFC);
}
