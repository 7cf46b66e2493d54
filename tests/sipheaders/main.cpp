// The tests of the headers that a host switches on.

#include "sipheaders/KxSipHeaderLibrary.h"
#include "sipobject/KxSipGrammar.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    KxSipHeaderLibrary::sEnable();
    return RUN_ALL_TESTS();
}
