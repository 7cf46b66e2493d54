#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

/** Shows the progress of reading in one line at the bottom of the terminal, on standard error. Shows nothing if
    standard error is not a terminal, or in the first half second. */
class Progress {
public:
    Progress();
    ~Progress() { wipe(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /** `done` and `size` are numbers of bytes. Without a size, there is no share to show. */
    void show(const std::string& file, std::size_t done, std::optional<std::size_t> size);
    /** Removes the line, so that standard error can be written. */
    void wipe();
    /** Removes the line if standard output is a terminal too, so that standard output can be written. */
    void makeRoom();

private:
    using Clock = std::chrono::steady_clock;

    bool m_on;
    bool m_shared; ///< Standard output is a terminal too.
    bool m_shown = false;
    Clock::time_point m_due;
};
