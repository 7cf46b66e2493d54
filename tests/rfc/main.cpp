// The tests of the RFC grammar, which is chosen once per process.

#include "sipobject/KxSipGrammar.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    return RUN_ALL_TESTS();
}
