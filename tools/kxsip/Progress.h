#pragma once

#include <chrono>
#include <cstddef>
#include <string>

/** How far reading has come: one line at the bottom of the terminal, on standard error. Shows nothing where that is no
    terminal, nor of what takes less than half a second. */
class Progress {
public:
    Progress();
    ~Progress() { wipe(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const std::string& file, std::size_t done, std::size_t size);
    /** Takes the line away, so that standard error can be written. */
    void wipe();
    /** Takes the line away where standard output is a terminal too, so that it can be written. */
    void makeRoom();

private:
    using Clock = std::chrono::steady_clock;

    bool m_on;
    bool m_shared; ///< Standard output is a terminal too.
    bool m_shown = false;
    Clock::time_point m_due;
};
