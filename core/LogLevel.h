#pragma once

namespace Oskan {

/** The severity of a log record. The numbers are those of log4cplus, so that a level set there compares directly. */
enum class LogLevel : int {
    Trace = 0,
    Debug = 10000,
    Info = 20000,
    Warn = 30000,
    Error = 40000,
    Fatal = 50000,
    Off = 60000 ///< Only as a logger's level: nothing is logged.
};

} // namespace Oskan
