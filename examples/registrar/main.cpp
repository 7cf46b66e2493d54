// A small SIP registrar over UDP. Each request is parsed and answered within one callback of ACE's reactor.
//
//   echo 'alice:secret' > users
//   registrar --realm example.com --users users --port 5060

#include "Registrar.h"
#include "common/Answers.h"
#include "common/Host.h"
#include "common/UdpPort.h"

#include <CLI/CLI.hpp>
#include <ace/Reactor.h>
#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <algorithm>
#include <iostream>

namespace {

struct Options {
    HostOptions host;
    std::string realm = "localhost";
    std::string users;
};

void run(const Options& options) {
    ACE_Reactor reactor;
    const Stop stop(reactor);
    const log4cplus::Initializer logging;
    const auto log = options.host.start("registrar");

    Registrar registrar(options.realm, readUsers(options.users));
    UdpPort port(options.host.listenAt(), reactor, [&](std::string_view datagram, const ACE_INET_Addr& from) {
        const Registrar::Reply reply = registrar.answer(datagram, hostOf(from), from.get_port_number());
        if (!reply.bytes.empty()) {
            ACE_INET_Addr to = from;
            to.set_port_number(static_cast<u_short>(reply.port));
            port.send(reply.bytes, to);
        }
    });
    std::cout << "registrar: listening on " << hostPort(hostOf(options.host.listenAt()), port.port()) << std::endl;
    reactor.run_reactor_event_loop();
}

/** Returns an error text for a realm that can't be quoted. Challenges have the realm in quotes, without escapes. */
std::string checkRealm(const std::string& realm) {
    const bool isPlain =
        std::all_of(realm.begin(), realm.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"'; });
    return isPlain && !realm.empty() && realm.size() <= 255 ? "" : "the realm must be plain text without quotes";
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("A small SIP registrar over UDP, with digest authentication.", "registrar");
    options.host.addTo(app);
    app.add_option("--realm", options.realm, "What users have passwords for")->capture_default_str()->check(checkRealm);
    app.add_option("--users", options.users, "File of lines user:password")->required()->check(CLI::ExistingFile);
    CLI11_PARSE(app, argc, argv);
    try {
        run(options);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "registrar: " << error.what() << '\n';
        return 1;
    }
}
