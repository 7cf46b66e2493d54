#pragma once

namespace Oskan {

/** How grave a log record is. The numbers are those of log4cplus, so that a level set there compares directly. */
enum class LogLevel : int {
    Trace = 0,
    Debug = 10000,
    Info = 20000,
    Warn = 30000,
    Error = 40000,
    Fatal = 50000,
    Off = 60000 ///< As a logger's level: nothing is logged.
};

} // namespace Oskan
