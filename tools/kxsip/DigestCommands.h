#pragma once

#include "tools/kxsip/Outcome.h"

namespace CLI {
class App;
}

/** Adds the commands "kxsip digest answer" and "kxsip digest verify" to the command line. The one that the user chose
    runs and sets `outcome`. */
void addDigestCommands(CLI::App& app, Outcome& outcome);
