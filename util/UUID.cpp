#include "util/UUID.h"

#include "util/ChaCha20.h"
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

/** Grows in the child of a fork, whose thread must not go on with its parent's numbers. */
constinit std::atomic<unsigned> s_forks{1};

struct Generator {
    unsigned forks; ///< s_forks when it was keyed; 0 before.
    unsigned used;  ///< Bytes of the block that are spent.
    ChaCha20::Block state;
    ChaCha20::Block block;
};
constinit thread_local Generator t_generator __attribute__((tls_model("initial-exec"))){};

void fillFromSystem(void* to, std::size_t size) {
    char* const bytes = static_cast<char*>(to);
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

[[gnu::cold, gnu::noinline]] void key(Generator& generator) {
    [[maybe_unused]] static const int s_watchingForks =
        pthread_atfork(nullptr, nullptr, [] { s_forks.fetch_add(1, std::memory_order_relaxed); });
    const unsigned forks = s_forks.load(std::memory_order_relaxed);
    std::array<std::uint32_t, 8> secret;
    fillFromSystem(&secret, sizeof secret);
    generator.state = ChaCha20::initialState(secret, {});
    generator.used = sizeof generator.block;
    generator.forks = forks;
}

void nextBlock(Generator& generator) {
    generator.block = ChaCha20::keyStream(generator.state);
    if (++generator.state[12] == 0) {
        ++generator.state[13];
    }
    generator.used = 0;
}

} // namespace

void UUID::uuid_create_string(char* buffer) {
    Generator& generator = t_generator;
    if (generator.forks != s_forks.load(std::memory_order_relaxed)) [[unlikely]] {
        key(generator);
    }
    if (generator.used == sizeof generator.block) {
        nextBlock(generator);
    }
    char bytes[16];
    std::memcpy(bytes, reinterpret_cast<const char*>(generator.block.data()) + generator.used, sizeof bytes);
    generator.used += static_cast<unsigned>(sizeof bytes);

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
