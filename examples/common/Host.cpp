#include "common/Host.h"

#include "sipobject/KxSipGrammar.h"
#include "util/KxInetAddress.h"

#include <CLI/CLI.hpp>
#include <ace/Reactor.h>
#include <log4cplus/configurator.h>

#include <sys/random.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace {

KxInetAddress addressOf(const std::string& text) {
    KxInetAddress address;
    address.initFromAddress(text);
    return address;
}

std::string checkAddress(const std::string& text) {
    return addressOf(text).isNone() ? "not an IPv4 or IPv6 address: " + text : "";
}

std::unique_ptr<log4cplus::ConfigureAndWatchThread> configureLog(const std::string& file, const char* logger) {
    if (!file.empty()) {
        return std::make_unique<log4cplus::ConfigureAndWatchThread>(file, 1000);
    }
    log4cplus::BasicConfigurator().configure();
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL); // without the library's details
    log4cplus::Logger::getInstance(logger).setLogLevel(log4cplus::INFO_LOG_LEVEL);
    return nullptr;
}

void seedRandom() {
    unsigned seed = 0;
    if (getentropy(&seed, sizeof seed) != 0) {
        throw std::system_error(errno, std::generic_category(), "no random bytes");
    }
    std::srand(seed);
}

} // namespace

Stop::Stop(ACE_Reactor& reactor) : ACE_Event_Handler(&reactor) {
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

Stop::~Stop() {
    reactor()->remove_handler(this, ACE_Event_Handler::READ_MASK | ACE_Event_Handler::DONT_CALL);
    close(m_handle);
}

int Stop::handle_input(ACE_HANDLE) {
    return reactor()->end_reactor_event_loop();
}

void HostOptions::addTo(CLI::App& app) {
    app.add_option("--address", address, "IPv4 address to listen on, or IPv6 address with --grammar rfc")
        ->capture_default_str()
        ->check(checkAddress);
    app.add_option("--port", port, "Port to listen on, 0 for any")->capture_default_str()->check(CLI::Range(0, 65535));
    app.add_option("--grammar", grammar, "Of messages: the library's default, or as RFC 3261 and its updates define it")
        ->capture_default_str()
        ->check(CLI::IsMember({"classic", "rfc"}));
    app.add_option("--log", log, "Properties of log4cplus; without, all goes to standard output")
        ->check(CLI::ExistingFile);
}

std::unique_ptr<log4cplus::ConfigureAndWatchThread> HostOptions::start(const char* logger) const {
    const bool isRFC = grammar == "rfc";
    if (!isRFC && addressOf(address).isIPv6()) {
        throw std::runtime_error("an IPv6 address needs --grammar rfc");
    }
    KxSipGrammar::sChoose(isRFC ? KxSipGrammar::Choice::RFC : KxSipGrammar::Choice::Classic);
    seedRandom();
    return configureLog(log, logger);
}

ACE_INET_Addr HostOptions::listenAt() const {
    return {static_cast<u_short>(port), addressOf(address).getHostAddress().c_str()};
}
