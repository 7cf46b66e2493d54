// Compares two threads that parse, each its own messages, with one thread. If items_per_second doubles, nothing that
// the threads share has a cost.

#include "bench/BenchSupport.h"

#include <benchmark/benchmark.h>

namespace {

void threads(benchmark::State& state) {
    const std::string plain = readSample("invite.sip");
    const std::string carrier = readSample("carrier_invite.sip");
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseMessage(plain));
        benchmark::DoNotOptimize(parseMessage(carrier));
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(threads)->Threads(1)->Threads(2)->UseRealTime();

} // namespace
