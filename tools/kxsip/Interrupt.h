#pragma once

#include <csignal>

/** While an object of this class exists, the first SIGINT or SIGTERM ends the input, not the process: what has arrived
    is still shown. The next such signal ends the process. Signals that the process ignores are still ignored. There may
    be one object at a time. */
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /** Whether a signal has come. */
    static bool sHasCome();
    /** Waits until the descriptor can be read, or its end or error is known. Returns false if a signal has come, before
        or during the wait. */
    static bool sWaitFor(int descriptor);

private:
    struct sigaction m_ofInterrupt;
    struct sigaction m_ofTermination;
};
