#pragma once

#include "sipobject/KxSipGrammar.h"

#include <string_view>

/** Chooses a grammar, and removes the argument, if the first argument is "--grammar=rfc" or "--grammar=classic". */
inline void chooseGrammar(int& argc, char**& argv) {
    const std::string_view argument = argc > 1 ? argv[1] : "";
    if (argument == "--grammar=rfc" || argument == "--grammar=classic") {
        KxSipGrammar::sChoose(argument.ends_with("rfc") ? KxSipGrammar::Choice::RFC : KxSipGrammar::Choice::Classic);
        argv[1] = argv[0];
        --argc;
        ++argv;
    }
}

/** In the RFC grammar, what was written is always written again. The classic one has exceptions. */
inline bool isRFC() {
    return KxSipGrammar::sChosen() == KxSipGrammar::Choice::RFC;
}
