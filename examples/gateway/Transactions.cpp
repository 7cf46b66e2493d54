#include "Transactions.h"

#include "Log.h"

#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipMaxForwardsHeader.h"
#include "sipobject/messages/KxSipAckMessage.h"

#include <algorithm>
#include <utility>

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kRinging{180000};

bool isInvite(const KxSipMessage& message) {
    return message.getCSeqHeader()->getMethod() == "INVITE";
}

} // namespace

struct Transactions::Server {
    Server(Timers& timers, Peer from, Quota::Place held)
        : peer(std::move(from)), place(std::move(held)), again(timers), end(timers) {}

    Peer peer;
    Quota::Place place;
    std::string last; // our last response
    bool isFinal = false;
    std::function<void()> lost;
    std::function<void()> cancelled;
    Timer again;
    Timer end;
};

struct Transactions::Client {
    Client(Timers& timers, KxHandle<KxSipRequest> question, Peer to, Answer asker)
        : request(std::move(question)),
          bytes(request->getText()),
          peer(std::move(to)),
          answer(std::move(asker)),
          again(timers),
          end(timers) {}

    KxHandle<KxSipRequest> request;
    std::string bytes;
    Peer peer;
    Answer answer;
    bool isFinal = false;
    Timer again;
    Timer end;
};

Transactions::Transactions(Timers& timers, Transport& transport, milliseconds t1)
    : m_timers(timers), m_transport(transport), m_t1(t1) {}
Transactions::~Transactions() = default;

Transactions::Id Transactions::idOf(const KxSipMessage& message, std::string_view method) {
    return Id(message.createKey().view()).append(" ").append(method);
}

bool Transactions::repeat(const Id& id) {
    const auto found = m_servers.find(id);
    if (found == m_servers.end()) {
        return false;
    }
    if (!found->second->last.empty()) {
        m_transport.send(found->second->last, found->second->peer);
    }
    return true;
}

void Transactions::open(const Id& id, const Peer& from, Quota::Place place) {
    auto server = std::make_unique<Server>(m_timers, from, std::move(place));
    server->end.start(kRinging, [this, id] { expire(id); });
    m_servers[id] = std::move(server);
}

Quota::Place Transactions::placeOf(const Id& id) const {
    const auto found = m_servers.find(id);
    return found == m_servers.end() ? nullptr : found->second->place;
}

void Transactions::respond(const Id& id, const KxHandle<KxSipResponse>& response, std::function<void()> lost) {
    const auto found = m_servers.find(id);
    if (found == m_servers.end()) {
        return;
    }
    Server& server = *found->second;
    const unsigned code = response->getStatusCode();
    const bool isReliable = !response->getHeaderByID(KxHeaderIDs::kRSeq).isNil();
    server.last = response->getText();
    server.isFinal = code >= 200;
    server.lost = std::move(lost);
    LOG4CPLUS_INFO(logger(), code << " to " << printable(response->getCSeqHeader()->getMethod()) << " of "
                                  << hostPortOf(server.peer.address));
    m_transport.send(server.last, server.peer);
    server.again.stop();
    if (isReliable) {
        sendAgain(server, m_t1, patience());
    } else if (server.isFinal && isInvite(*response) && (code < 300 || !server.peer.isReliable())) {
        sendAgain(server, m_t1, longestWait());
    }
    if (isReliable || server.isFinal) {
        const bool cannotRepeat = server.peer.isReliable() && !isInvite(*response);
        server.end.start(cannotRepeat ? milliseconds(0) : patience(), [this, id] { expire(id); });
    }
}

/** Repeats the response until it is acknowledged: over UDP since it may be lost, 2xx and reliable ones over TCP too. */
void Transactions::sendAgain(Server& server, milliseconds wait, milliseconds longest) {
    server.again.start(wait, [this, &server, wait, longest] {
        m_transport.send(server.last, server.peer);
        sendAgain(server, std::min(2 * wait, longest), longest);
    });
}

void Transactions::onCancel(const Id& id, std::function<void()> work) {
    if (const auto found = m_servers.find(id); found != m_servers.end()) {
        found->second->cancelled = std::move(work);
    }
}

void Transactions::cancel(const Id& id) {
    const auto found = m_servers.find(id);
    if (found != m_servers.end() && found->second->cancelled && !found->second->isFinal) {
        const std::function<void()> work = std::move(found->second->cancelled);
        work();
    }
}

void Transactions::acknowledged(const Id& id) {
    const auto found = m_servers.find(id);
    if (found == m_servers.end()) {
        return;
    }
    Server& server = *found->second;
    server.again.stop();
    server.lost = {};
    server.end.start(server.isFinal ? longestJourney() : kRinging, [this, id] { expire(id); });
}

void Transactions::expire(const Id& id) {
    const auto found = m_servers.find(id);
    const std::function<void()> lost = std::move(found->second->lost);
    if (found->second->isFinal || !lost) {
        m_servers.erase(found);
    } else {
        found->second->again.stop();
    }
    if (lost) {
        lost();
    }
}

void Transactions::ask(const KxHandle<KxSipRequest>& request, const Peer& to, Answer answer) {
    const Id id = idOf(*request, request->getMethod());
    auto client = std::make_unique<Client>(m_timers, request, to, std::move(answer));
    m_transport.send(client->bytes, to);
    if (!to.isReliable()) {
        sendAgain(*client, m_t1);
    }
    client->end.start(patience(), [this, id] { giveUp(id); });
    m_clients[id] = std::move(client);
}

void Transactions::sendAgain(Client& client, milliseconds wait) {
    client.again.start(wait, [this, &client, wait] {
        m_transport.send(client.bytes, client.peer);
        sendAgain(client, isInvite(*client.request) ? 2 * wait : std::min(2 * wait, longestWait()));
    });
}

void Transactions::giveUp(const Id& id) {
    const auto client = m_clients.extract(id);
    if (!client.mapped()->isFinal) {
        client.mapped()->answer({});
    }
}

void Transactions::receive(const KxHandle<KxSipResponse>& response) {
    const auto cseq = response->getCSeqHeader();
    const auto found = m_clients.find(cseq.isNil() ? Id() : idOf(*response, cseq->getMethod()));
    if (found == m_clients.end()) {
        return; // the request was given up, or was never sent
    }
    Client& client = *found->second;
    const Answer answer = client.answer; // a copy, since the call may destroy the client
    const Id& id = found->first;
    const unsigned code = response->getStatusCode();
    const bool isRepeated = client.isFinal;
    client.isFinal = code >= 200 || isRepeated;
    if (!isInvite(*response)) {
        if (client.isFinal) {
            m_clients.erase(found);
        }
        answer(response);
        return;
    }
    client.again.stop();
    if (code >= 300) {
        acknowledge(client, response);
    }
    if (!isRepeated) {
        client.end.start(client.isFinal ? patience() : kRinging, [this, id] { giveUp(id); });
    }
    if (!isRepeated || code / 100 == 2) {
        answer(response);
    }
}

/** Sends the ACK of a final response other than 2xx, which belongs to the INVITE's transaction. [RFC 3261 17.1.1.3] */
void Transactions::acknowledge(const Client& client, const KxHandle<KxSipResponse>& refusal) {
    const auto* const invite = client.request->as<KxSipInviteMessage>();
    if (invite != nullptr) {
        m_transport.send(KxSipAckMessage::sFor(*invite, *refusal)->getText(), client.peer);
    }
}
