// kx_bench: runs the benchmarks, with the options of the benchmark library. With --edits, measures the cost of edits.

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
