#pragma once

#include <ace/Event_Handler.h>

#include <string>

/** Ends the reactor's loop on SIGINT and SIGTERM. They arrive as input, not in the midst of something. */
class Stop final : public ACE_Event_Handler {
public:
    /** For this thread and all that are started from now on. Throws std::runtime_error. */
    explicit Stop(ACE_Reactor& reactor);
    ~Stop() override;

    ACE_HANDLE get_handle() const override { return m_handle; }
    int handle_input(ACE_HANDLE handle) override;

private:
    ACE_HANDLE m_handle = ACE_INVALID_HANDLE;
};

/** Logs as the file of log4cplus properties says; without one, what the logger says goes to standard output, and only
    warnings of the library. */
void configureLog(const std::string& file, const char* logger);
