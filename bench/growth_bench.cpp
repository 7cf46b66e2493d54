// How the cost of a value grows with the number of values: parses, writes and frees messages with 10 to 10,000 of them.
// Compare the counter "per_item", in seconds.

#include "bench/BenchSupport.h"
#include "util/KxByteArrayOutputStream.h"

#include <benchmark/benchmark.h>

namespace {

using Make = std::string (*)(std::int64_t);

std::string repeated(std::int64_t count, const char* first, const char* item, const char* afterItem, const char* last) {
    std::string text(first);
    for (std::int64_t i = 0; i < count; ++i) {
        text.append(item).append(std::to_string(1000000 + i)).append(afterItem); // all items have the same length
    }
    return text + last;
}

std::string oneLine(std::int64_t n) {
    return requestWith(repeated(n, "Route: <sip:r.example.net;lr>", ", <sip:r", ".example.net;lr>", "\r\n"));
}
std::string ownLines(std::int64_t n) {
    return requestWith(repeated(n, "", "Route: <sip:r", ".example.net;lr>\r\n", ""));
}
std::string vias(std::int64_t n) {
    return requestWith("", repeated(n, "", "Via: SIP/2.0/UDP h.example.net:5060;branch=z9hG4bK", "\r\n", ""));
}
std::string unknownHeaders(std::int64_t n) {
    return requestWith(repeated(n, "", "X-H", ": value\r\n", ""));
}
std::string parameters(std::int64_t n) {
    return requestWith("", kPlainVia, repeated(n, "From: <sip:a@example.com>;tag=1", ";p", "=v", "\r\n"));
}
std::string emptyValues(std::int64_t n) {
    return requestWith("Supported: " + std::string(static_cast<std::size_t>(n), ',') + "timer\r\n");
}

void grow(benchmark::State& state, Make make) {
    const std::string bytes = make(state.range(0));
    for (auto _ : state) {
        KxByteArrayOutputStream out(bytes.size() * 2);
        parseMessage(bytes)->serialize(out);
        benchmark::DoNotOptimize(out.size());
    }
    state.counters["per_item"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

#define KX_GROWTH(name, make) BENCHMARK_CAPTURE(grow, name, make)->RangeMultiplier(10)->Range(10, 10000)
KX_GROWTH(one_line, oneLine);
KX_GROWTH(own_lines, ownLines);
KX_GROWTH(vias, vias);
KX_GROWTH(unknown_headers, unknownHeaders);
KX_GROWTH(parameters, parameters);
KX_GROWTH(empty_values, emptyValues);

} // namespace
