#pragma once

/** Runs the tool with the arguments of the program. Returns its exit code. Throws what the command does not report
    itself. */
int runCommandLine(int argc, const char* const* argv);
