#pragma once

#include "tools/kxsip/Outcome.h"

namespace CLI {
class App;
}

/** Adds the commands "kxsip response", "ack", "bye", "cancel" and "prack" to the command line. The one that the user
    chose runs and sets `outcome`. */
void addDeriveCommands(CLI::App& app, Outcome& outcome);
