#pragma once

#include "tools/kxsip/Outcome.h"

namespace CLI {
class App;
}

/** Adds "kxsip flow" to the command line; when it is what the user asked for, it runs and sets the outcome. */
void addFlowCommand(CLI::App& app, Outcome& outcome);
