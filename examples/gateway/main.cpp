// A small user-agent server and client over UDP and TCP, on ACE's reactor. It answers calls, or makes one.
//
//   gateway --port 5060
//   gateway --port 0 call sip:bob@127.0.0.1:5060 --duration 2000
//
// Transport sends and receives bytes. Transactions retransmits messages that may be lost. UserAgent parses requests,
// refuses those that can't be served, and decides what is served when there is no room. Call, with its derived classes
// Callee and Caller, is a dialog. There is one thread.

#include "UserAgent.h"
#include "common/Host.h"

#include <CLI/CLI.hpp>
#include <ace/Reactor.h>
#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <iostream>

namespace {

struct Options {
    HostOptions host;
    UserAgent::Limits limits;
    CallHost::Times times;
    unsigned ring = 200;
    unsigned t1 = 500;
    bool isCalling = false;
    bool overTcp = false;
    unsigned duration = 1000;
    int cancelAfter = -1;
    Caller::Plan plan;
};

/** Makes the call that the options describe. The end of the call ends the reactor's loop. */
void call(UserAgent& agent, Transport& transport, ACE_Reactor& reactor, const Options& options, bool& isDone) {
    Caller::Plan plan = options.plan;
    plan.duration = std::chrono::milliseconds(options.duration);
    if (options.cancelAfter >= 0) {
        plan.cancelAfter = std::chrono::milliseconds(options.cancelAfter);
    }
    plan.tell = [](const std::string& line) { std::cout << "call: " << line << std::endl; };
    plan.end = [&](bool wasDone) {
        isDone = wasDone;
        reactor.end_reactor_event_loop();
    };
    const KxSipURL url(plan.uri.c_str());
    const int family = options.host.listenAt().get_type();
    ACE_INET_Addr address;
    if (url.getPort() > 65535 ||
        address.set(static_cast<u_short>(url.getPort()), url.getHost().c_str(), 1, family) == -1 ||
        address.get_type() != family) {
        throw std::runtime_error("no such host: " + plan.uri);
    }
    agent.call(options.overTcp ? transport.connect(address) : Peer{address}, plan);
}

bool run(const Options& options) {
    ACE_Reactor reactor;
    const Stop stop(reactor);
    const log4cplus::Initializer logging;
    const auto log = options.host.start("gateway");

    Timers timers(reactor);
    UserAgent* receiver = nullptr;
    Transport transport(options.host.listenAt(), reactor,
                        [&](const KxSipFramer::Frame& frame, const Peer& from) { receiver->receive(frame, from); });
    UserAgent agent(timers, transport, options.times, options.limits);
    receiver = &agent;
    std::cout << "gateway: listening on " << transport.hostPort() << std::endl;
    bool isDone = !options.isCalling;
    if (options.isCalling) {
        call(agent, transport, reactor, options, isDone);
    }
    reactor.run_reactor_event_loop();
    return isDone;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("A small SIP user agent over UDP and TCP: answers calls, or makes one.", "gateway");
    options.host.addTo(app);
    app.add_option("--ring", options.ring, "Milliseconds that a call rings")
        ->capture_default_str()
        ->check(CLI::Range(0, 120000));
    app.add_option("--calls", options.limits.calls,
                   "Calls at a time; over it, and over --transactions, INVITEs get 503")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--transactions", options.limits.transactions, "Transactions of INVITEs outside a dialog at a time")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--session-expires", options.times.sessionSeconds,
                   "Seconds after which a call ends whose other side is gone; less than 90 is for tests")
        ->capture_default_str()
        ->check(CLI::Range(2, 86400));
    app.add_option("--timer-t1", options.t1, "Milliseconds of a round trip, T1; other waits are multiples of it")
        ->capture_default_str()
        ->check(CLI::Range(10, 10000));
    CLI::App* const call = app.add_subcommand("call", "Make one call, and end when it is over");
    call->add_option("uri", options.plan.uri, "Whom to call, \"sip:bob@192.0.2.1:5060\"")->required();
    call->add_option("--duration", options.duration, "Milliseconds until it is hung up")
        ->capture_default_str()
        ->check(CLI::Range(0, 3600000));
    call->add_option("--cancel-after", options.cancelAfter, "Cancel it so many milliseconds after the first response")
        ->check(CLI::Range(0, 120000));
    call->add_flag("--reliable", options.plan.isReliable, "Require reliable provisional responses");
    call->add_option("--session", options.plan.sessionSeconds, "Ask for a session timer of so many seconds");
    call->add_flag("--tcp", options.overTcp, "Over TCP");
    CLI11_PARSE(app, argc, argv);
    options.isCalling = call->parsed();
    options.times.ring = std::chrono::milliseconds(options.ring);
    options.times.t1 = std::chrono::milliseconds(options.t1);
    try {
        return run(options) ? 0 : 1;
    } catch (const KxHandle<KxException>& failure) {
        std::cerr << "gateway: " << failure->getExceptionMessage() << '\n';
    } catch (const std::exception& error) {
        std::cerr << "gateway: " << error.what() << '\n';
    }
    return 1;
}
