#include "util/UUID.h"

#include "util/KxBytes.h"
#include "util/KxHexEncoding.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <pthread.h>
#include <random>
#include <unistd.h>

namespace {

/** Grows in the child of a fork, whose thread must not use the bytes that its parent uses too. */
constinit std::atomic<unsigned> s_forks{1};

/** Random bytes of a thread that are not used yet: one call of the system serves a few identifiers. */
struct Stock {
    unsigned forks; ///< s_forks when it was filled; 0 before.
    unsigned used;
    std::array<char, 256> bytes; ///< As many as the system gives at once.
};
constinit thread_local Stock t_stock __attribute__((tls_model("initial-exec"))){};

[[gnu::noinline]] void fill(Stock& stock) {
    [[maybe_unused]] static const int s_watchingForks =
        pthread_atfork(nullptr, nullptr, [] { s_forks.fetch_add(1, std::memory_order_relaxed); });
    const unsigned forks = s_forks.load(std::memory_order_relaxed);
    if (getentropy(stock.bytes.data(), stock.bytes.size()) != 0) { // a system without the call
        std::random_device source;
        std::generate(stock.bytes.begin(), stock.bytes.end(), [&] { return static_cast<char>(source() & 0xFF); });
    }
    stock.used = 0;
    stock.forks = forks;
}

} // namespace

void UUID::uuid_create_string(char* buffer) {
    Stock& stock = t_stock;
    if (stock.forks != s_forks.load(std::memory_order_relaxed) || stock.used == stock.bytes.size()) [[unlikely]] {
        fill(stock);
    }
    char bytes[16];
    std::memcpy(bytes, stock.bytes.data() + stock.used, sizeof bytes);
    stock.used += static_cast<unsigned>(sizeof bytes);

    bytes[6] = static_cast<char>((bytes[6] & 0x0F) | 0x40); // version 4
    bytes[8] = static_cast<char>((bytes[8] & 0x3F) | 0x80); // the variant of the RFC
    char digits[32];
    KxHexEncoding::toHex({bytes, sizeof bytes}, digits);
    const char* from = digits;
    for (const std::size_t length : {8U, 4U, 4U, 4U, 12U}) {
        buffer = KxBytes::copyShort(buffer, from, length);
        *buffer++ = '-';
        from += length;
    }
    buffer[-1] = '\0'; // no hyphen after the last group
}
