#pragma once

#include "tools/kxsip/Outcome.h"

namespace CLI {
class App;
}

/** Adds "kxsip digest answer" and "kxsip digest verify" to the command line; the one that the user asked for runs and
    sets the outcome. */
void addDigestCommands(CLI::App& app, Outcome& outcome);
