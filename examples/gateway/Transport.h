#pragma once

#include "TcpPort.h"
#include "common/Answers.h"
#include "common/UdpPort.h"

#include <memory>
#include <string>
#include <string_view>

/** The address from which a message came or to which one is sent. */
struct Peer {
    ACE_INET_Addr address;
    std::uint64_t connection = 0; ///< Number of the TCP connection; 0 for UDP.

    bool isReliable() const { return connection != 0; }
    const char* transport() const { return isReliable() ? "TCP" : "UDP"; }
};

/** UDP and TCP on one port. */
class Transport {
public:
    /** Called with each message, and with each error. Must not throw. */
    using Receiver = std::function<void(const KxSipFramer::Frame& frame, const Peer& from)>;

    /** With port 0 any port is used that is free for both. Throws std::system_error. */
    Transport(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver);

    const std::string& host() const { return m_host; }
    bool isIPv6() const { return m_host.find(':') != std::string::npos; }
    /** Host and port as in a URL. */
    std::string hostPort() const { return ::hostPort(m_host, port()); }
    unsigned port() const { return m_udp->port(); }
    /** Makes a TCP connection. Throws std::system_error. */
    Peer connect(const ACE_INET_Addr& to) { return {to, m_tcp->connect(to)}; }
    void send(std::string_view message, const Peer& to);

private:
    std::string m_host;
    std::unique_ptr<TcpPort> m_tcp;
    std::unique_ptr<UdpPort> m_udp;
};
