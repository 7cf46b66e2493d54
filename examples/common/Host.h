#pragma once

#include <ace/Event_Handler.h>
#include <ace/INET_Addr.h>

#include <string>

namespace CLI {
class App;
}

/** Ends the reactor's loop on SIGINT and SIGTERM. The signals are read as input of the reactor; they interrupt
    nothing. */
class Stop final : public ACE_Event_Handler {
public:
    /** Blocks both signals for this thread and all threads that it starts later. Throws std::runtime_error. */
    explicit Stop(ACE_Reactor& reactor);
    ~Stop() override;

    ACE_HANDLE get_handle() const override { return m_handle; }
    int handle_input(ACE_HANDLE handle) override;

private:
    ACE_HANDLE m_handle = ACE_INVALID_HANDLE;
};

/** Configures logging by a file with log4cplus properties. If the name is empty, logs to standard output: INFO of
    `logger`, and only warnings of all other loggers. */
void configureLog(const std::string& file, const char* logger);

/** Seeds the C library's generator with random bytes of the system. The library's tags and CSeq numbers come from this
    generator. To be called once, before any message is built. Throws std::system_error. */
void seedRandom();

/** The options of every host: the address and port to listen on, and the configuration of the log. */
struct HostOptions {
    std::string address = "127.0.0.1"; // local by default; another address must be set explicitly
    unsigned port = 5060;
    std::string log;

    /** Adds --address, --port and --log. This object must outlive the parsing of the command line. */
    void addTo(CLI::App& app);
    ACE_INET_Addr listenAt() const { return {static_cast<u_short>(port), address.c_str()}; }
};
