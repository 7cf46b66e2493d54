#pragma once

#include <ace/Event_Handler.h>
#include <ace/INET_Addr.h>

#include <string>

namespace CLI {
class App;
}

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

/** Seeds the C library's generator, from which the library's tags and CSeq numbers are drawn, with the system's random
    bytes. Once, before anything is built. Throws std::system_error. */
void seedRandom();

/** What every host is told: where it listens, and where its log goes. */
struct HostOptions {
    std::string address = "127.0.0.1"; // who wants to serve others has to say so
    unsigned port = 5060;
    std::string log;

    /** Adds --address, --port and --log; the options must outlive the parsing. */
    void addTo(CLI::App& app);
    ACE_INET_Addr listenAt() const { return {static_cast<u_short>(port), address.c_str()}; }
};
