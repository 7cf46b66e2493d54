#include "tools/kxsip/Progress.h"

#include "tools/kxsip/Printable.h"

#include <algorithm>
#include <iostream>

#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds kPatience(500);
constexpr std::chrono::milliseconds kInterval(100);
constexpr std::size_t kWidth = 30;

/** Returns "[###...] 52%", or without a size "1234 bytes of". */
std::string textOf(std::size_t done, std::optional<std::size_t> size) {
    if (!size) {
        return std::to_string(done) + " bytes of";
    }
    const double share = *size == 0 ? 1.0 : static_cast<double>(std::min(done, *size)) / static_cast<double>(*size);
    const auto full = static_cast<std::size_t>(share * kWidth);
    return "[" + std::string(full, '#') + std::string(kWidth - full, '.') + "] " +
           std::to_string(static_cast<int>(share * 100)) + "%";
}

} // namespace

Progress::Progress()
    : m_on(isatty(STDERR_FILENO) == 1), m_shared(isatty(STDOUT_FILENO) == 1), m_due(Clock::now() + kPatience) {}

void Progress::show(const std::string& file, std::size_t done, std::optional<std::size_t> size) {
    if (!m_on || Clock::now() < m_due) {
        return;
    }
    std::cout.flush();
    std::cerr << '\r' << textOf(done, size) << ' ' << printable(file) << "\x1B[K" << std::flush;
    m_shown = true;
    m_due = Clock::now() + kInterval;
}

void Progress::wipe() {
    if (m_shown) {
        std::cerr << "\r\x1B[K" << std::flush;
        m_shown = false;
    }
}

void Progress::makeRoom() {
    if (m_shared) {
        wipe();
    }
}
