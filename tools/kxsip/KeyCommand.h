#pragma once

#include "tools/kxsip/Outcome.h"

namespace CLI {
class App;
}

/** Adds the command "kxsip key" to the command line. If the user chose it, it runs and sets `outcome`. */
void addKeyCommand(CLI::App& app, Outcome& outcome);
