#include "common/UdpPort.h"

#include "common/Answers.h"

#include <ace/Reactor.h>

#include <cerrno>
#include <system_error>
#include <utility>

constexpr int kOnlyIPv6 = 1; // IPv4 peers of an IPv6 socket would have addresses that are neither

UdpPort::UdpPort(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver)
    : ACE_Event_Handler(&reactor), m_receiver(std::move(receiver)) {
    if (m_socket.open(local, local.get_type(), 0, 0, kOnlyIPv6) == -1 ||
        reactor.register_handler(this, ACE_Event_Handler::READ_MASK) == -1) {
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

void UdpPort::send(std::string_view datagram, const ACE_INET_Addr& to) {
    m_socket.send(datagram.data(), datagram.size(), to, MSG_DONTWAIT);
}

int UdpPort::handle_input(ACE_HANDLE) {
    // A datagram with a wrong checksum wakes the reactor but can't be received: never wait for it.
    ACE_INET_Addr peer;
    const ssize_t size = m_socket.recv(m_buffer.data(), m_buffer.size(), peer, MSG_DONTWAIT);
    if (size >= 0) {
        m_receiver(std::string_view(m_buffer.data(), static_cast<std::size_t>(size)), peer);
    }
    return 0;
}

std::string hostOf(const ACE_INET_Addr& address) {
    char host[INET6_ADDRSTRLEN] = "";
    const std::string_view text = address.get_host_addr(host, sizeof host) == nullptr ? "" : host;
    return std::string(text.substr(0, text.find('%'))); // a zone is of no use to others
}

std::string hostPortOf(const ACE_INET_Addr& address) {
    return hostPort(hostOf(address), address.get_port_number());
}
