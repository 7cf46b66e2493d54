// How the cost of an item grows with the number of items: parse, write and free messages with 1,000 and 100,000 of them.
// The counter "per_item" is what to compare.

#include "bench/BenchSupport.h"
#include "util/KxByteArrayOutputStream.h"

#include <benchmark/benchmark.h>

namespace {

using Make = std::string (*)(std::int64_t);

std::string request(const std::string& lines, const char* from = "From: <sip:a@example.com>;tag=1\r\n") {
    return "OPTIONS sip:b@example.net SIP/2.0\r\nVia: SIP/2.0/UDP h.example.com;branch=z9hG4bK1\r\n" +
           std::string(from) + "To: <sip:b@example.net>\r\nCall-ID: growth@example.com\r\nCSeq: 1 OPTIONS\r\n" + lines +
           "Content-Length: 0\r\n\r\n";
}

std::string repeated(std::int64_t count, const char* first, const char* item, const char* last) {
    std::string text(first);
    for (std::int64_t i = 0; i < count; ++i) {
        text.append(item).append(std::to_string(1000000 + i)); // every item of one length
    }
    return text + last;
}

std::string commas(std::int64_t n) {
    return request("Supported: " + std::string(static_cast<std::size_t>(n), ',') + "timer\r\n");
}
std::string lines(std::int64_t n) {
    return request(repeated(n, "", "\r\nRoute: <sip:r.example.net;lr>;n=", "\r\n").substr(2));
}
std::string unknownLines(std::int64_t n) {
    return request(repeated(n, "", "\r\nX-Header: value-", "\r\n").substr(2));
}
std::string values(std::int64_t n) {
    return request(repeated(n, "Contact: <sip:a>", ", sip:user@host-", "\r\n"));
}
std::string parameters(std::int64_t n) {
    return request(repeated(n, "From: <sip:a@example.com>;tag=1", ";p", "\r\n"), "");
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

BENCHMARK_CAPTURE(grow, commas, commas)->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(grow, lines_of_one_kind, lines)->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(grow, unknown_lines, unknownLines)->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(grow, values_of_one_line, values)->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(grow, parameters, parameters)->Arg(1000)->Arg(100000);

} // namespace
