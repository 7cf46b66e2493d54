#pragma once

#include "TcpPort.h"
#include "common/UdpPort.h"

#include <memory>
#include <string>
#include <string_view>

/** Where a message came from, and where its answers go. */
struct Peer {
    ACE_INET_Addr address;
    std::uint64_t connection = 0; ///< The one of TCP; 0 for UDP.

    bool isReliable() const { return connection != 0; }
    const char* transport() const { return isReliable() ? "TCP" : "UDP"; }
};

/** UDP and TCP on one port. */
class Transport {
public:
    /** Throws nothing. */
    using Receiver = std::function<void(std::string_view message, const Peer& from)>;

    /** Port 0 asks for any that both have free. Throws std::system_error. */
    Transport(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver);

    const std::string& host() const { return m_host; }
    unsigned port() const { return m_udp->port(); }
    /** Throws std::system_error. */
    Peer connect(const ACE_INET_Addr& to) { return {to, m_tcp->connect(to)}; }
    void send(std::string_view message, const Peer& to);

private:
    std::string m_host;
    std::unique_ptr<TcpPort> m_tcp;
    std::unique_ptr<UdpPort> m_udp;
};
