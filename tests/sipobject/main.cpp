// Runs the tests, with --grammar=rfc in the RFC grammar.

#include "tests/sipobject/support/Grammar.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    chooseGrammar(argc, argv);
    return RUN_ALL_TESTS();
}
