#include "core/AceCleanupLogger.h"

#include "core/ClassLoggers.h"
#include "core/LogDeferral.h"

namespace Oskan {

bool AceCleanupLogger::isEnabledSlow(LogLevel level) const noexcept {
    if (m_level.load(std::memory_order_relaxed) == kNotMade) {
        ClassLoggers::sMake(*this);
    }
    const int lowest = m_level.load(std::memory_order_relaxed);
    return lowest != kNotMade && static_cast<int>(level) >= lowest;
}

void AceCleanupLogger::log(LogLevel level, std::string_view text, const char* source, int line) const noexcept {
    if (!isEnabled(level)) {
        return;
    }
    try {
        if (LogDeferral::sIsOpen()) {
            LogDeferral::sKeep(*this, level, text, source, line);
        } else {
            ClassLoggers::sCopy(*this).log(level, text, source, line);
        }
    } catch (...) {
        // The work that was to be logged goes on.
    }
}

Logger& AceCleanupLogger::getLogger() const {
    return ClassLoggers::sGet(*this);
}

std::string AceCleanupLogger::getName() const {
    return std::string("tandril.kx.") + m_className;
}

} // namespace Oskan
