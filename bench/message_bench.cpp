// Parse, serialise and round trip of the sample messages, and the digest of a request.

#include "bench/BenchSupport.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/headers/KxSipAuthorizationHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxHexEncoding.h"

#include <benchmark/benchmark.h>

namespace {

constexpr const char* kSamples[] = {"invite.sip", "carrier_invite.sip", "register_digest.sip"};
constexpr std::size_t kBuffer = 4096;

void countBytes(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
}

void parse(benchmark::State& state, const std::string& name) {
    const std::string bytes = readSample(name);
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseMessage(bytes));
    }
    countBytes(state, bytes.size());
}

void serialise(benchmark::State& state, const std::string& name) {
    const KxHandle<KxSipMessage> message = parseMessage(readSample(name));
    std::size_t size = 0;
    for (auto _ : state) {
        KxByteArrayOutputStream out(kBuffer);
        message->serialize(out);
        size = out.size();
    }
    countBytes(state, size);
}

void roundTrip(benchmark::State& state, const std::string& name) {
    const std::string bytes = readSample(name);
    for (auto _ : state) {
        KxByteArrayOutputStream out(kBuffer);
        parseMessage(bytes)->serialize(out);
        benchmark::DoNotOptimize(out.size());
    }
    countBytes(state, bytes.size());
}

/** Computes the digest response of the sample's second request, which answers a challenge. */
void digest(benchmark::State& state) {
    const std::string file = readSample("register_digest.sip");
    const KxHandle<KxSipMessage> message = parseMessage(file.substr(file.rfind("REGISTER sip:")));
    const auto header = static_cast<const KxSipRequest&>(*message).getAuthorizationHeader();
    const auto credentials = KxHandleCast<KxSipDigestCredentialsInfo>(header->getCredentials());
    credentials->setMethod("REGISTER");
    credentials->setPassword("secret");
    for (auto _ : state) {
        benchmark::DoNotOptimize(KxHexEncoding::toHex(credentials->getRequestDigest()));
    }
}

const bool s_registered = [] {
    for (const char* const name : kSamples) {
        const std::string sample(name);
        benchmark::RegisterBenchmark(("parse/" + sample).c_str(), parse, sample);
        benchmark::RegisterBenchmark(("serialise/" + sample).c_str(), serialise, sample);
        benchmark::RegisterBenchmark(("roundtrip/" + sample).c_str(), roundTrip, sample);
    }
    benchmark::RegisterBenchmark("digest", digest);
    return true;
}();

} // namespace
