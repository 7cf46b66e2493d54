// The tests of the RFC grammar, which the configuration chooses.

#include "core/GlobalConfig.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    Oskan::GlobalConfig::getInstance().set("tandril.sip.rfcGrammar", "true");
    return RUN_ALL_TESTS();
}
