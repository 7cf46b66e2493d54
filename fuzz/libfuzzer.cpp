// What libFuzzer calls before the first input.

#include "tests/sipobject/support/Grammar.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    chooseGrammar(*argc, *argv);
    return 0;
}
