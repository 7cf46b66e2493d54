#include "tools/kxsip/Interrupt.h"

#include <cerrno>

#include <poll.h>

namespace {

volatile std::sig_atomic_t s_hasCome = 0;

void noteSignal(int) {
    s_hasCome = 1;
    static_cast<void>(std::signal(SIGINT, SIG_DFL));
    static_cast<void>(std::signal(SIGTERM, SIG_DFL));
}

/** Returns the action that the signal had before. */
struct sigaction catchSignal(int signal) {
    struct sigaction before {};
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART; // for writing; sWaitFor is interrupted all the same
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) {
        sigaction(signal, &action, nullptr);
    }
    return before;
}

} // namespace

Interrupt::Interrupt() : m_ofInterrupt(catchSignal(SIGINT)), m_ofTermination(catchSignal(SIGTERM)) {}

Interrupt::~Interrupt() {
    sigaction(SIGINT, &m_ofInterrupt, nullptr);
    sigaction(SIGTERM, &m_ofTermination, nullptr);
}

bool Interrupt::sHasCome() {
    return s_hasCome != 0;
}

bool Interrupt::sWaitFor(int descriptor) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigset_t before;
    sigprocmask(SIG_BLOCK, &signals, &before); // so that none comes between the question and the wait
    pollfd input{descriptor, POLLIN, 0};
    while (s_hasCome == 0 && ppoll(&input, 1, nullptr, &before) == -1 && errno == EINTR) {
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return s_hasCome == 0;
}
