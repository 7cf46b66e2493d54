#include "UdpPort.h"

#include <ace/Reactor.h>

#include <cerrno>
#include <system_error>

UdpPort::UdpPort(const ACE_INET_Addr& local, ACE_Reactor& reactor, Registrar& registrar)
    : ACE_Event_Handler(&reactor), m_registrar(registrar) {
    if (m_socket.open(local) == -1 || reactor.register_handler(this, ACE_Event_Handler::READ_MASK) == -1) {
        const int error = errno;
        m_socket.close();
        throw std::system_error(error, std::generic_category(), "cannot listen");
    }
}

UdpPort::~UdpPort() {
    reactor()->remove_handler(this, ACE_Event_Handler::READ_MASK | ACE_Event_Handler::DONT_CALL);
    m_socket.close();
}

unsigned UdpPort::port() const {
    ACE_INET_Addr bound;
    return m_socket.get_local_addr(bound) == -1 ? 0 : bound.get_port_number();
}

int UdpPort::handle_input(ACE_HANDLE) {
    // A datagram with a wrong checksum wakes the reactor and then is not there: never wait for it.
    ACE_INET_Addr peer;
    const ssize_t size = m_socket.recv(m_buffer.data(), m_buffer.size(), peer, MSG_DONTWAIT);
    char host[INET6_ADDRSTRLEN] = "";
    if (size < 0 || peer.get_host_addr(host, sizeof host) == nullptr) {
        return 0;
    }
    const std::string_view datagram(m_buffer.data(), static_cast<std::size_t>(size));
    const Registrar::Reply reply = m_registrar.answer(datagram, host, peer.get_port_number());
    if (!reply.bytes.empty()) {
        // What can't be sent is lost, as it may be on the way; the client asks again.
        peer.set_port_number(static_cast<u_short>(reply.port));
        m_socket.send(reply.bytes.data(), reply.bytes.size(), peer, MSG_DONTWAIT);
    }
    return 0;
}
