#pragma once

#include "tools/kxsip/Outcome.h"

namespace CLI {
class App;
}

/** Adds the command "kxsip calls" to the command line. If the user chose it, it runs and sets `outcome`. */
void addCallsCommand(CLI::App& app, Outcome& outcome);
