#pragma once

#include "Registrar.h"

#include <ace/Event_Handler.h>
#include <ace/INET_Addr.h>
#include <ace/SOCK_Dgram.h>

#include <array>

/** A UDP socket that the reactor watches: each datagram is given to the registrar, each answer sent. */
class UdpPort final : public ACE_Event_Handler {
public:
    /** Binds the address and registers with the reactor; both others must live longer. Throws std::system_error. */
    UdpPort(const ACE_INET_Addr& local, ACE_Reactor& reactor, Registrar& registrar);
    ~UdpPort() override;

    /** The one that was bound, also where 0 asked for any. */
    unsigned port() const;

    ACE_HANDLE get_handle() const override { return m_socket.get_handle(); }
    /** Never fails: -1 would end the service. */
    int handle_input(ACE_HANDLE handle) override;

private:
    Registrar& m_registrar;
    ACE_SOCK_Dgram m_socket;
    std::array<char, 65536> m_buffer; // more than the longest datagram
};
