#include "Timers.h"

#include "Log.h"

#include <ace/Reactor.h>

#include <utility>

Timers::~Timers() {
    reactor()->cancel_timer(this);
}

int Timers::handle_timeout(const ACE_Time_Value&, const void* number) {
    const auto found = m_jobs.find(reinterpret_cast<std::uintptr_t>(number));
    if (found != m_jobs.end()) {
        const std::function<void()> work = std::move(found->second.work);
        m_jobs.erase(found);
        guarded("a timer", work);
    }
    return 0;
}

void Timer::start(std::chrono::milliseconds delay, std::function<void()> work) {
    stop();
    m_number = ++m_timers.m_last;
    const ACE_Time_Value wait(delay.count() / 1000, static_cast<suseconds_t>(delay.count() % 1000 * 1000));
    const long id = m_timers.reactor()->schedule_timer(&m_timers, reinterpret_cast<const void*>(m_number), wait);
    m_timers.m_jobs.emplace(m_number, Timers::Job{id, std::move(work)});
}

void Timer::stop() {
    const auto found = m_timers.m_jobs.find(std::exchange(m_number, 0));
    if (found != m_timers.m_jobs.end()) {
        m_timers.reactor()->cancel_timer(found->second.id);
        m_timers.m_jobs.erase(found);
    }
}
