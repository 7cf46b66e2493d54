#pragma once

#include <ace/Event_Handler.h>
#include <ace/INET_Addr.h>
#include <ace/SOCK_Dgram.h>

#include <array>
#include <functional>
#include <string>
#include <string_view>

/** A UDP socket that the reactor watches. Calls the receiver with each datagram. */
class UdpPort final : public ACE_Event_Handler {
public:
    /** Called with each datagram. Must not throw. */
    using Receiver = std::function<void(std::string_view datagram, const ACE_INET_Addr& from)>;

    /** Binds the address and registers with the reactor, which must outlive this object. Throws std::system_error. */
    UdpPort(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver);
    ~UdpPort() override;

    /** Returns the bound port, also if port 0 asked for any. */
    unsigned port() const;
    /** Never waits. A datagram that can't be sent is lost, as it can also be in the network. */
    void send(std::string_view datagram, const ACE_INET_Addr& to);

    ACE_HANDLE get_handle() const override { return m_socket.get_handle(); }
    /** Always returns 0; -1 would end the service. */
    int handle_input(ACE_HANDLE handle) override;

private:
    Receiver m_receiver;
    ACE_SOCK_Dgram m_socket;
    std::array<char, 65536> m_buffer; // more than the longest datagram
};

/** Returns the host of the address, "192.0.2.1" or "2001:db8::1". */
std::string hostOf(const ACE_INET_Addr& address);
/** Returns host and port as in a URL, "192.0.2.1:5060" or "[2001:db8::1]:5060". */
std::string hostPortOf(const ACE_INET_Addr& address);
