// The operations that the guard counts. Each runs a fixed number of times between two requests to callgrind, which
// counts the instructions; allocations and bytes held are counted here. Run by guard.py, which interprets the output.

#include "bench/BenchSupport.h"
#include "bench/DigestExample.h"
#include "sipheaders/KxSipHeaderLibrary.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/messages/KxSipResponse.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <malloc.h>
#include <valgrind/callgrind.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

// Every allocation of the process calls this malloc, which calls that of the C library.
extern "C" {
void* __libc_malloc(std::size_t size);
void* malloc(std::size_t size);
}

namespace {

constexpr int kWarmUp = 10;
constexpr int kRuns = 20;
constexpr std::size_t kHeld = 10000;
constexpr std::size_t kBuffer = 4096;
constexpr const char* kUrl = "sip:alice:secret@gateway.example.com:5070;transport=tcp;lr?Subject=hi";

std::uint64_t s_allocations = 0;
std::string s_prefix; // of the names of operations

/** Counts an operation; prints its name, the unit, the number of runs, and the count for all runs. */
void count(const std::string& name, const std::function<void()>& operation) {
    for (int i = 0; i < kWarmUp; ++i) {
        operation();
    }
    const std::string label = s_prefix + name + "\tinstructions\t" + std::to_string(kRuns);
    const std::uint64_t before = s_allocations;
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < kRuns; ++i) {
        operation();
    }
    CALLGRIND_DUMP_STATS_AT(label.c_str());
    std::printf("%s%s\tallocations\t%d\t%llu\n", s_prefix.c_str(), name.c_str(), kRuns,
                static_cast<unsigned long long>(s_allocations - before));
}

void countHeld(const std::string& name, const std::string& bytes) {
    std::vector<KxHandle<KxSipMessage>> held(kHeld);
    const struct mallinfo2 before = mallinfo2();
    for (auto& message : held) {
        message = parseMessage(bytes);
    }
    const struct mallinfo2 after = mallinfo2();
    std::printf("hold %s\tbytes\t%zu\t%zu\n", name.c_str(), kHeld,
                after.uordblks + after.hblkhd - before.uordblks - before.hblkhd);
}

void write(const KxSipMessage& message) {
    KxByteArrayOutputStream out(kBuffer);
    message.serialize(out);
}

void respond(const KxHandle<KxSipRequest>& request) {
    const KxHandle<KxSipResponse> response = KxMake<KxSipResponse>(200, request, nullptr, nullptr, 0U);
    response->getToHeader()->setTag("5f3e9a1c");
    write(*response);
}

void countMessage(const std::string& name, const std::string& bytes) {
    count("parse " + name, [&] { parseMessage(bytes); });
    const KxHandle<KxSipMessage> message = parseMessage(bytes);
    count("serialise " + name, [&] { write(*message); });
    const KxHandle<KxSipRequest> request(static_cast<KxSipRequest*>(message.get()));
    count("200 to " + name, [&] { respond(request); });
}

void countAll() {
    const std::string calls = readSample("register_digest.sip");
    countMessage("invite", readSample("invite.sip"));
    countMessage("carrier_invite", readSample("carrier_invite.sip"));
    countMessage("register", calls.substr(calls.rfind("REGISTER sip:")));
    count("SIP URL", [] { KxMake<KxSipURL>(kUrl); });
    std::string refused;
    for (int i = 0; i < 25; ++i) {
        refused += "no colon\r\nt:<\r\nv:x\r\nAuthorization: x\r\n"; // refused by the framework and by grammars
    }
    refused = requestWith(refused);
    // because of "t:<" and "v:x" the RFC grammar refuses the message, which costs an exception
    count(s_prefix.empty() ? "parse 100 refused lines" : "refuse 100 lines", [&] {
        try {
            parseMessage(refused);
        } catch (const KxHandle<KxException>&) {
        }
    });
#ifdef KX_BENCH_HAS_DIGEST
    const DigestExample example;
    std::array<char, 33> digits{};
    count("digest response", [&] { example.respond(digits.data()); });
#endif
}

} // namespace

extern "C" void* malloc(std::size_t size) {
    ++s_allocations;
    return __libc_malloc(size);
}

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "hold") { // needs no callgrind, and would be slow under it
        countHeld(argv[2], readSample(std::string(argv[2]) + ".sip"));
    } else {
        const std::string_view mode = argc == 2 ? argv[1] : "";
        if (!mode.empty()) {
            KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
            s_prefix = "rfc ";
        }
        if (mode == "headers") {
            KxSipHeaderLibrary::sEnable();
            countMessage("ims_invite", readSample("ims_invite.sip"));
        } else {
            countAll();
        }
    }
    return 0;
}
