// kx_bench: the benchmarks, with the options of the benchmark library; or, with --edits, the cost of edits.

#include "bench/HostileEdits.h"

#include <benchmark/benchmark.h>

#include <string_view>

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--edits") {
        return compareHostileEdits() ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
