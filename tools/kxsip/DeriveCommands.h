#pragma once

#include "tools/kxsip/Outcome.h"

namespace CLI {
class App;
}

/** Adds "kxsip response", "ack", "bye", "cancel" and "prack" to the command line; the one that the user asked for runs
    and sets the outcome. */
void addDeriveCommands(CLI::App& app, Outcome& outcome);
