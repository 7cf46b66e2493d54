#pragma once

#include "sipheaders/KxSipHeaderLibrary.h"
#include "tests/sipobject/support/Grammar.h"

/** As chooseGrammar; in the RFC grammar, the headers of sipheaders/ are switched on. */
inline void startUp(int& argc, char**& argv) {
    chooseGrammar(argc, argv);
    if (isRFC()) {
        KxSipHeaderLibrary::sEnable();
    }
}
