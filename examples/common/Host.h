#pragma once

#include <ace/Event_Handler.h>
#include <ace/INET_Addr.h>

#include <memory>
#include <string>

namespace CLI {
class App;
}
namespace log4cplus {
class ConfigureAndWatchThread;
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

/** The options of every host: the address and port to listen on, the grammar, and the configuration of the log. */
struct HostOptions {
    std::string address = "127.0.0.1"; // local by default; another address must be set explicitly
    unsigned port = 5060;
    std::string grammar = "classic"; // the library's default
    std::string log;

    /** Adds --address, --port, --grammar and --log. This object must outlive the parsing of the command line. */
    void addTo(CLI::App& app);
    /** To be called once, before any message is built or read: chooses the grammar, configures the log and seeds the C
        library's generator, from which tags and CSeq numbers of the classic grammar come. Without a file, INFO of
        `logger` and warnings of all other loggers are logged to standard output. A file may be changed at any time:
        while the object that is returned exists, log levels follow it within a second. Throws std::runtime_error. */
    [[nodiscard]] std::unique_ptr<log4cplus::ConfigureAndWatchThread> start(const char* logger) const;
    ACE_INET_Addr listenAt() const;
};
