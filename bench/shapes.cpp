// Resident memory of a host that runs for a long time. Messages are read and dropped, at most 40 MB of them are live at
// a time, and the lengths of their values change from shape to shape, as in traffic from many different peers. Prints
// tab-separated lines: what was measured, and MB.
//
//   kx_shapes           one thread reads and drops
//   kx_shapes handover  one thread reads, another drops

#include "bench/BenchSupport.h"
#include "core/MemAccounts.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <mutex>
#include <random>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Message = KxHandle<KxSipMessage>;

constexpr int kShapes = 150;
constexpr double kMegabyte = 1024.0 * 1024.0;
constexpr std::int64_t kMostLive = 40 * 1024 * 1024;
constexpr int kLookEvery = 8; ///< Messages read between two looks at the live bytes.

std::int64_t liveBytes() {
    std::int64_t sum = 0;
    for (const Oskan::MemAccountUsage& account : Oskan::MemAccounts::sList()) {
        sum += account.usage.liveBytes;
    }
    return sum;
}

std::int64_t residentBytes() {
    std::int64_t total = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

/** The lengths of the values of one shape. Every kind of value has its own middle length, from a few bytes to
    thousands. */
class Shape {
public:
    explicit Shape(std::mt19937& dice) : m_dice(dice) {
        for (std::size_t& middle : m_middles) {
            middle = static_cast<std::size_t>(std::exp2(std::uniform_real_distribution<>(3, 12)(dice)));
        }
        m_bodyMiddle = static_cast<std::size_t>(std::exp2(std::uniform_real_distribution<>(4, 14)(dice)));
        m_headers = std::uniform_int_distribution<std::size_t>(2, 30)(dice);
    }

    std::string message() {
        std::string lines;
        for (std::size_t i = 0; i < m_headers; ++i) {
            lines.append("X-H")
                .append(std::to_string(i))
                .append(": ")
                .append(text(m_middles[2 + i % 2]))
                .append("\r\n");
        }
        lines.append("Contact: <sip:").append(text(m_middles[0])).append("@h.example.com;p=");
        lines.append(text(m_middles[1])).append(">;q=0.5;x=").append(text(m_middles[4])).append("\r\n");
        std::string message = requestWith(lines);
        const std::string body = text(m_bodyMiddle);
        message.replace(message.find("Content-Length: 0"), 17,
                        "Content-Type: a/b\r\nContent-Length: " + std::to_string(body.size()));
        return message + body;
    }

private:
    std::string text(std::size_t middle) {
        return std::string(std::uniform_int_distribution<std::size_t>(middle, middle + middle / 8)(m_dice), 'v');
    }

    std::mt19937& m_dice;
    std::size_t m_middles[5];
    std::size_t m_bodyMiddle;
    std::size_t m_headers;
};

/** Drops messages in a thread of its own. */
class Dropper {
public:
    Dropper() : m_thread([this] { run(); }) {}
    ~Dropper() {
        hand(Message());
        m_thread.join();
    }
    void hand(Message&& message) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_messages.size() < 64; });
        m_messages.push_back(std::move(message));
        m_changed.notify_all();
    }

private:
    void run() {
        for (bool ended = false; !ended;) {
            std::deque<Message> taken;
            {
                std::unique_lock lock(m_mutex);
                m_changed.wait(lock, [this] { return !m_messages.empty(); });
                taken.swap(m_messages);
                m_changed.notify_all();
            }
            ended = taken.back().isNil();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Message> m_messages;
    std::thread m_thread;
};

void print(const char* what, std::int64_t bytes) {
    std::printf("%s\t%.1f\n", what, static_cast<double>(bytes) / kMegabyte);
    std::fflush(stdout);
}

class Run {
public:
    explicit Run(bool handsOver) : m_handsOver(handsOver) {}

    void all() {
        for (int shape = 1; shape <= kShapes; ++shape) {
            one();
            if (shape == 25 || shape == 100 || shape == kShapes) {
                print(("resident after shape " + std::to_string(shape)).c_str(), residentBytes());
            }
        }
        print("peak of live bytes", m_mostLive);
        print("peak of resident memory", m_mostResident);
        while (!m_live.empty()) {
            drop();
        }
    }

private:
    /** Reads more messages than are live at a time. */
    void one() {
        Shape shape(m_dice);
        for (std::size_t read = 0; !m_full || read < m_live.size() + m_live.size() / 4; ++read) {
            m_live.push_back(parseMessage(shape.message()));
            if (read % kLookEvery == 0) {
                look();
            }
        }
    }

    void look() {
        std::int64_t live = liveBytes();
        m_mostLive = std::max(m_mostLive, live);
        m_mostResident = std::max(m_mostResident, residentBytes());
        m_full = m_full || live > kMostLive;
        while (live > kMostLive && !m_live.empty()) {
            for (int i = 0; i < kLookEvery && !m_live.empty(); ++i) {
                drop();
            }
            live = liveBytes();
        }
    }

    void drop() {
        Message dropped = std::move(m_live.front());
        m_live.pop_front();
        if (m_handsOver) {
            m_dropper.hand(std::move(dropped));
        }
    }

    const bool m_handsOver;
    std::mt19937 m_dice{1};
    std::deque<Message> m_live;
    std::int64_t m_mostLive = 0;
    std::int64_t m_mostResident = 0;
    bool m_full = false;
    Dropper m_dropper;
};

} // namespace

int main(int argc, char** argv) {
    Run(argc == 2 && std::string_view(argv[1]) == "handover").all();
    print("resident when all is freed", residentBytes());
    print("live when all is freed", liveBytes());
    return 0;
}
