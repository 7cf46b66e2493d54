// What libFuzzer calls before the first input.

#include "fuzz/StartUp.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    startUp(*argc, *argv);
    return 0;
}
