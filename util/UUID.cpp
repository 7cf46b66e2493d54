#include "util/UUID.h"

#include "util/KxHexEncoding.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <pthread.h>
#include <random>
#include <sys/random.h>

namespace {

/** Grows in the child of a fork, whose thread must not use the bytes that its parent uses too. */
constinit std::atomic<unsigned> s_forks{1};

/** Random bytes of a thread that are not used yet: one call of the system serves a few identifiers. */
struct Stock {
    unsigned forks; ///< s_forks when it was filled; 0 before.
    unsigned used;
    std::array<char, 256> bytes; ///< As many as the system gives at once, whatever signals arrive.
};
constinit thread_local Stock t_stock __attribute__((tls_model("initial-exec"))){};

void fillFromSystem(char* bytes, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = getrandom(bytes + done, size - done, 0);
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) { // a system without the call
            const unsigned number = std::random_device()();
            bytes[done++] = static_cast<char>(number & 0xFF);
        }
    }
}

[[gnu::noinline]] void fill(Stock& stock) {
    [[maybe_unused]] static const int s_watchingForks =
        pthread_atfork(nullptr, nullptr, [] { s_forks.fetch_add(1, std::memory_order_relaxed); });
    const unsigned forks = s_forks.load(std::memory_order_relaxed);
    fillFromSystem(stock.bytes.data(), stock.bytes.size());
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
    std::memcpy(buffer, digits, 8);
    buffer[8] = '-';
    std::memcpy(buffer + 9, digits + 8, 4);
    buffer[13] = '-';
    std::memcpy(buffer + 14, digits + 12, 4);
    buffer[18] = '-';
    std::memcpy(buffer + 19, digits + 16, 4);
    buffer[23] = '-';
    std::memcpy(buffer + 24, digits + 20, 12);
    buffer[kTextLength] = '\0';
}
