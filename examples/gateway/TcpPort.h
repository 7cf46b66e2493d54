#pragma once

#include <ace/Event_Handler.h>
#include <ace/INET_Addr.h>
#include <ace/SOCK_Acceptor.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>

/** TCP connections that the reactor watches, those that are accepted and those that are made. Each message that comes
    is given to the receiver. */
class TcpPort final : public ACE_Event_Handler {
public:
    /** Throws nothing. */
    using Receiver = std::function<void(std::string_view message, const ACE_INET_Addr& from, std::uint64_t connection)>;

    /** Listens, and registers with the reactor, which must live longer. Throws std::system_error. */
    TcpPort(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver);
    ~TcpPort() override;

    unsigned port() const;
    /** The number of a new connection; waits for it some seconds at most. Throws std::system_error. */
    std::uint64_t connect(const ACE_INET_Addr& to);
    /** Never waits: what the peer does not take at once is kept for a while, and nothing is sent to one that is gone. */
    void send(std::string_view message, std::uint64_t connection);

    ACE_HANDLE get_handle() const override { return m_acceptor.get_handle(); }
    int handle_input(ACE_HANDLE handle) override;

private:
    class Connection;
    std::uint64_t adopt(std::unique_ptr<Connection> connection);

    Receiver m_receiver;
    ACE_SOCK_Acceptor m_acceptor;
    std::uint64_t m_last = 0; // numbers are never used again; 0 is none
    std::unordered_map<std::uint64_t, std::unique_ptr<Connection>> m_connections;
};
