#pragma once

#include <ace/Event_Handler.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <unordered_map>

/** Calls work later, on the reactor's thread. Exceptions of the work are logged. */
class Timers final : public ACE_Event_Handler {
public:
    explicit Timers(ACE_Reactor& reactor) : ACE_Event_Handler(&reactor) {}
    ~Timers() override;

    int handle_timeout(const ACE_Time_Value& now, const void* number) override;

private:
    friend class Timer;
    struct Job {
        long id; // of the reactor's timer
        std::function<void()> work;
    };

    std::uintptr_t m_last = 0; // number of the last job; 0 is none
    std::unordered_map<std::uintptr_t, Job> m_jobs;
};

/** Work to be done once, later. It is not done if the timer is destroyed before. */
class Timer {
public:
    explicit Timer(Timers& timers) : m_timers(timers) {}
    ~Timer() { stop(); }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /** Starts the timer; work that was started before is not done. The work may destroy the timer. */
    void start(std::chrono::milliseconds delay, std::function<void()> work);
    void stop();

private:
    Timers& m_timers;
    std::uintptr_t m_number = 0;
};
