#include "tools/kxsip/CommandLine.h"
#include "tools/kxsip/Outcome.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    try {
        std::ios::sync_with_stdio(false);
        return runCommandLine(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "kxsip: " << error.what() << '\n';
        return static_cast<int>(Outcome::Failed);
    }
}
