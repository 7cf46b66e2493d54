#pragma once

#include "sipobject/KxSipGrammar.h"

#include <string_view>

/** Chooses the RFC grammar, and removes the argument, if the first argument is "--grammar=rfc". */
inline void chooseGrammar(int& argc, char**& argv) {
    if (argc > 1 && argv[1] == std::string_view("--grammar=rfc")) {
        KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
        argv[1] = argv[0];
        --argc;
        ++argv;
    }
}

/** In the RFC grammar, what was written is always written again. The classic one has exceptions. */
inline bool isRFC() {
    return KxSipGrammar::sChosen() == KxSipGrammar::Choice::RFC;
}
