#include "TcpPort.h"

#include "Log.h"
#include "common/UdpPort.h"

#include <ace/Reactor.h>
#include <ace/SOCK_Connector.h>
#include <ace/SOCK_Stream.h>

#include <netinet/tcp.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMaxConnections = 500;   // for a new one, the one that was silent longest is closed
constexpr std::size_t kMaxUnsent = 256 * 1024; // bytes; the connection of a peer that reads nothing is closed
constexpr int kConnectSeconds = 5;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

class TcpPort::Connection final : public ACE_Event_Handler {
public:
    explicit Connection(TcpPort& owner) : ACE_Event_Handler(owner.reactor()), m_owner(owner) {}
    ~Connection() override {
        reactor()->remove_handler(this, ACE_Event_Handler::ALL_EVENTS_MASK | ACE_Event_Handler::DONT_CALL);
        m_socket.close();
    }

    ACE_SOCK_Stream& socket() { return m_socket; }
    Clock::time_point lastHeard() const { return m_lastHeard; }
    void open(std::uint64_t number, const ACE_INET_Addr& peer) {
        m_number = number;
        m_peer = peer;
        m_socket.enable(ACE_NONBLOCK);
        int on = 1;
        m_socket.set_option(IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        reactor()->register_handler(this, ACE_Event_Handler::READ_MASK);
    }

    void send(std::string_view message) {
        if (m_isEnding) {
            return;
        }
        if (m_unsent.empty()) {
            message.remove_prefix(sendSome(message));
        }
        if (message.empty()) {
            return;
        }
        m_unsent.append(message);
        reactor()->schedule_wakeup(this, ACE_Event_Handler::WRITE_MASK);
        if (m_unsent.size() > kMaxUnsent) {
            giveUp("does not take what is sent");
        }
    }

    ACE_HANDLE get_handle() const override { return m_socket.get_handle(); }

    int handle_output(ACE_HANDLE) override {
        m_unsent.erase(0, sendSome(m_unsent));
        if (m_unsent.empty()) {
            reactor()->cancel_wakeup(this, ACE_Event_Handler::WRITE_MASK);
            endIfSent();
        }
        return 0;
    }

    int handle_input(ACE_HANDLE) override {
        std::array<char, 65536> buffer;
        const ssize_t size = m_socket.recv(buffer.data(), buffer.size());
        if (size <= 0) {
            return size < 0 && errno == EWOULDBLOCK ? 0 : -1;
        }
        if (!m_isEnding) {
            m_lastHeard = Clock::now();
        }
        try {
            read(std::string_view(buffer.data(), static_cast<std::size_t>(size)));
        } catch (const std::exception& failure) {
            giveUp(failure.what());
        }
        return m_isGivenUp ? -1 : 0;
    }

    /** Destroys this object. */
    int handle_close(ACE_HANDLE, ACE_Reactor_Mask) override {
        m_owner.m_connections.erase(m_number);
        return 0;
    }

private:
    void read(std::string_view input) {
        while (!m_isGivenUp && !m_isEnding) {
            const KxSipFramer::Frame frame = m_framer.next(input);
            input.remove_prefix(frame.consumed);
            if (frame.kind == KxSipFramer::Kind::Incomplete) {
                break;
            }
            if (frame.kind == KxSipFramer::Kind::Ping) {
                send("\r\n"); // [RFC 5626 4.4.1]
                continue;
            }
            m_owner.m_receiver(frame, m_peer, m_number);
            if (frame.kind == KxSipFramer::Kind::Error) {
                m_isEnding = true;
                endIfSent();
            }
        }
    }

    /** Ends the output when the last answer was sent. The input is read and dropped until the peer ends it: closing a
        socket with unread input could destroy the answer on its way. */
    void endIfSent() {
        if (m_isEnding && m_unsent.empty()) {
            ACE_OS::shutdown(m_socket.get_handle(), SHUT_WR);
        }
    }

    std::size_t sendSome(std::string_view bytes) {
        const ssize_t sent = m_socket.send(bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0 && errno != EWOULDBLOCK) {
            giveUp("is broken");
        }
        return sent < 0 ? 0 : static_cast<std::size_t>(sent);
    }

    /** Shuts the connection down. The caller may still use this object, so it is not destroyed here: the reactor will
        find the end of the input and destroy it. */
    void giveUp(const char* why) {
        LOG4CPLUS_INFO(logger(), "connection of " << hostOf(m_peer) << ": " << why);
        m_isGivenUp = true;
        ACE_OS::shutdown(m_socket.get_handle(), SHUT_RDWR);
    }

    TcpPort& m_owner;
    std::uint64_t m_number = 0;
    ACE_SOCK_Stream m_socket;
    ACE_INET_Addr m_peer;
    KxSipFramer m_framer;
    std::string m_unsent;
    bool m_isGivenUp = false;
    bool m_isEnding = false; // the next message can't be found; what was answered is still sent
    Clock::time_point m_lastHeard = Clock::now();
};

TcpPort::TcpPort(const ACE_INET_Addr& local, ACE_Reactor& reactor, Receiver receiver)
    : ACE_Event_Handler(&reactor), m_receiver(std::move(receiver)) {
    if (m_acceptor.open(local, 1, local.get_type(), ACE_DEFAULT_BACKLOG, 0, 1) == -1 ||
        reactor.register_handler(this, ACE_Event_Handler::ACCEPT_MASK) == -1) {
        const int error = errno;
        m_acceptor.close();
        errno = error;
        fail("cannot listen");
    }
    m_acceptor.enable(ACE_NONBLOCK);
}

TcpPort::~TcpPort() {
    m_connections.clear();
    reactor()->remove_handler(this, ACE_Event_Handler::ACCEPT_MASK | ACE_Event_Handler::DONT_CALL);
    m_acceptor.close();
}

unsigned TcpPort::port() const {
    ACE_INET_Addr bound;
    return m_acceptor.get_local_addr(bound) == -1 ? 0 : bound.get_port_number();
}

std::uint64_t TcpPort::connect(const ACE_INET_Addr& to) {
    auto connection = std::make_unique<Connection>(*this);
    const ACE_Time_Value patience(kConnectSeconds);
    if (ACE_SOCK_Connector().connect(connection->socket(), to, &patience) == -1) {
        fail("cannot connect");
    }
    return adopt(std::move(connection));
}

void TcpPort::send(std::string_view message, std::uint64_t connection) {
    const auto found = m_connections.find(connection);
    if (found != m_connections.end()) {
        found->second->send(message);
    }
}

int TcpPort::handle_input(ACE_HANDLE) {
    auto connection = std::make_unique<Connection>(*this);
    if (m_acceptor.accept(connection->socket()) == 0) {
        adopt(std::move(connection));
    }
    return 0; // -1 would end the service
}

std::uint64_t TcpPort::adopt(std::unique_ptr<Connection> connection) {
    if (m_connections.size() >= kMaxConnections) {
        m_connections.erase(
            std::min_element(m_connections.begin(), m_connections.end(), [](const auto& a, const auto& b) {
                return a.second->lastHeard() < b.second->lastHeard();
            }));
    }
    ACE_INET_Addr peer;
    connection->socket().get_remote_addr(peer);
    connection->open(++m_last, peer);
    m_connections.emplace(m_last, std::move(connection));
    return m_last;
}
