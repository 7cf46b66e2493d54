#include "Transport.h"

#include <system_error>

Transport::Transport(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver) : m_host(hostOf(local)) {
    for (int triesLeft = local.get_port_number() == 0 ? 10 : 1; m_udp == nullptr; --triesLeft) {
        m_tcp = std::make_unique<TcpPort>(
            local, reactor,
            [receiver](const KxSipFramer::Frame& frame, const ACE_INET_Addr& from, std::uint64_t connection) {
                receiver(frame, {from, connection});
            });
        ACE_INET_Addr same = local;
        same.set_port_number(static_cast<u_short>(m_tcp->port()));
        try {
            m_udp = std::make_unique<UdpPort>(
                same, reactor, [receiver](std::string_view datagram, const ACE_INET_Addr& from) {
                    const KxSipFramer::Frame frame = KxSipFramer(KxSipFramer::Mode::Messages).next(datagram);
                    if (frame.kind == KxSipFramer::Kind::Message || frame.kind == KxSipFramer::Kind::Error) {
                        receiver(frame, {from});
                    }
                });
        } catch (const std::system_error&) {
            if (triesLeft <= 1) {
                throw;
            }
        }
    }
}

void Transport::send(std::string_view message, const Peer& to) {
    if (to.isReliable()) {
        m_tcp->send(message, to.connection);
    } else {
        m_udp->send(message, to.address);
    }
}
