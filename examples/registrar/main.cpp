// A small SIP registrar over UDP: a message is read, answered and written, all between two turns of ACE's reactor.
//
//   echo 'alice:secret' > users
//   registrar --realm example.com --users users --port 5060

#include "UdpPort.h"

#include <CLI/CLI.hpp>
#include <ace/Reactor.h>
#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>

namespace {

struct Options {
    std::string address = "127.0.0.1"; // who wants to serve others has to say so
    unsigned port = 5060;
    std::string realm = "localhost";
    std::string users;
    std::string log;
};

/** Ends the reactor's loop on SIGINT and SIGTERM. They arrive as input, not in the midst of something. */
class Stop final : public ACE_Event_Handler {
public:
    /** For this thread and all that are started from now on. */
    explicit Stop(ACE_Reactor& reactor) : ACE_Event_Handler(&reactor) {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGINT);
        sigaddset(&signals, SIGTERM);
        if (pthread_sigmask(SIG_BLOCK, &signals, nullptr) != 0) {
            throw std::runtime_error("cannot block signals");
        }
        m_handle = signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
        if (reactor.register_handler(this, ACE_Event_Handler::READ_MASK) == -1) {
            throw std::runtime_error("cannot wait for signals");
        }
    }
    ~Stop() override {
        reactor()->remove_handler(this, ACE_Event_Handler::READ_MASK | ACE_Event_Handler::DONT_CALL);
        close(m_handle);
    }

    ACE_HANDLE get_handle() const override { return m_handle; }
    int handle_input(ACE_HANDLE) override { return reactor()->end_reactor_event_loop(); }

private:
    ACE_HANDLE m_handle = ACE_INVALID_HANDLE;
};

void configureLog(const std::string& file) {
    if (file.empty()) {
        log4cplus::BasicConfigurator().configure();
        log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL); // the library's details aside
        log4cplus::Logger::getInstance("registrar").setLogLevel(log4cplus::INFO_LOG_LEVEL);
    } else {
        log4cplus::PropertyConfigurator::doConfigure(file);
    }
}

void run(const Options& options) {
    ACE_Reactor reactor;
    const Stop stop(reactor);
    const log4cplus::Initializer log;
    configureLog(options.log);

    Registrar registrar(options.realm, readUsers(options.users));
    const UdpPort port(ACE_INET_Addr(static_cast<u_short>(options.port), options.address.c_str()), reactor, registrar);
    std::cout << "registrar: listening on " << options.address << ':' << port.port() << std::endl;
    reactor.run_reactor_event_loop();
}

/** The realm stands between quotes in every challenge, and nothing escapes it there. */
std::string checkRealm(const std::string& realm) {
    const bool isPlain =
        std::all_of(realm.begin(), realm.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"'; });
    return isPlain && !realm.empty() && realm.size() <= 255 ? "" : "the realm must be plain text without quotes";
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("A small SIP registrar over UDP, with digest authentication.", "registrar");
    app.add_option("--address", options.address, "IPv4 address to listen on")
        ->capture_default_str()
        ->check(CLI::ValidIPV4);
    app.add_option("--port", options.port, "Port to listen on, 0 for any")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    app.add_option("--realm", options.realm, "What users have passwords for")->capture_default_str()->check(checkRealm);
    app.add_option("--users", options.users, "File of lines user:password")->required()->check(CLI::ExistingFile);
    app.add_option("--log", options.log, "Properties of log4cplus; without, all goes to standard output")
        ->check(CLI::ExistingFile);
    CLI11_PARSE(app, argc, argv);
    try {
        run(options);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "registrar: " << error.what() << '\n';
        return 1;
    }
}
