#pragma once

#include "sipobject/messages/KxSipFramer.h"

#include <ace/Event_Handler.h>
#include <ace/INET_Addr.h>
#include <ace/SOCK_Acceptor.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>

/** The TCP connections, accepted and made, that the reactor watches. Answers pings and calls the
    receiver with each message. A connection whose bytes can't be framed is closed after that was reported. */
class TcpPort final : public ACE_Event_Handler {
public:
    /** Called with each message, and with an error, which is the last frame of its connection. Must not throw. */
    using Receiver =
        std::function<void(const KxSipFramer::Frame& frame, const ACE_INET_Addr& from, std::uint64_t connection)>;

    /** Listens, and registers with the reactor, which must outlive this object. Throws std::system_error. */
    TcpPort(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver);
    ~TcpPort() override;

    unsigned port() const;
    /** Connects and returns the number of the connection. Waits at most a few seconds. Throws std::system_error. */
    std::uint64_t connect(const ACE_INET_Addr& to);
    /** Never waits. Bytes that the peer does not take at once are kept up to a limit. Does nothing if the connection is
        closed. */
    void send(std::string_view message, std::uint64_t connection);

    ACE_HANDLE get_handle() const override { return m_acceptor.get_handle(); }
    int handle_input(ACE_HANDLE handle) override;

private:
    class Connection;
    std::uint64_t adopt(std::unique_ptr<Connection> connection);

    Receiver m_receiver;
    ACE_SOCK_Acceptor m_acceptor;
    std::uint64_t m_last = 0; // number of the last connection; numbers are not reused, 0 is none
    std::unordered_map<std::uint64_t, std::unique_ptr<Connection>> m_connections;
};
