#pragma once

#include "Quota.h"
#include "Timers.h"
#include "Transport.h"

#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

/** The transactions of both sides: what may be lost on the way is sent again until it is answered, and what comes again
    is answered as before. Nothing is kept longer than its timers run. [RFC 3261 17, RFC 3262 3, RFC 6026] */
class Transactions {
public:
    /** A transaction: the key that the library makes, and the method, which is no part of it. */
    using Id = std::string;
    /** Gets the responses to a request, those of an INVITE all; nil when there is none in time. */
    using Answer = std::function<void(const KxHandle<KxSipResponse>& response)>;

    /** T1 is the time of a round trip, from which all other waits follow. [RFC 3261 17.1.1.1] */
    Transactions(Timers& timers, Transport& transport, std::chrono::milliseconds t1);
    ~Transactions();

    static Id idOf(const KxSipMessage& message, std::string_view method);
    /** How long anything is sent again that nobody answers. */
    std::chrono::milliseconds patience() const { return 64 * m_t1; }

    // Requests that were received.

    /** Whether the request came before; then it is answered as before, or will be. */
    bool repeat(const Id& id);
    /** Opens a transaction, which keeps the place until it ends. */
    void open(const Id& id, const Peer& from, Quota::Place place);
    /** The place of an open transaction; null for any other. */
    Quota::Place placeOf(const Id& id) const;
    /** Sends the response. One that has to be acknowledged, reliable or final to an INVITE, is sent again until it is;
        `lost` is called if that never happens. */
    void respond(const Id& id, const KxHandle<KxSipResponse>& response, std::function<void()> lost = {});
    bool isOpen(const Id& id) const { return m_servers.count(id) != 0; }
    /** What a CANCEL does to this INVITE, while it has no final response. */
    void onCancel(const Id& id, std::function<void()> work);
    void cancel(const Id& id);
    /** An ACK or PRACK came. */
    void acknowledged(const Id& id);

    // Requests that are sent.

    /** Sends the request, whose top Via is ours. The ACK of a refused INVITE is sent here too. */
    void ask(const KxHandle<KxSipRequest>& request, const Peer& to, Answer answer);
    /** A response came, to whatever. */
    void receive(const KxHandle<KxSipResponse>& response);

private:
    struct Server;
    struct Client;

    void sendAgain(Server& server, std::chrono::milliseconds wait, std::chrono::milliseconds longest);
    void sendAgain(Client& client, std::chrono::milliseconds wait);
    void expire(const Id& id);
    void giveUp(const Id& id);
    void acknowledge(const Client& client, const KxHandle<KxSipResponse>& refusal);

    std::chrono::milliseconds longestWait() const { return 8 * m_t1; }     // T2, between two of the same
    std::chrono::milliseconds longestJourney() const { return 10 * m_t1; } // T4, of a message

    Timers& m_timers;
    Transport& m_transport;
    std::chrono::milliseconds m_t1;
    std::unordered_map<Id, std::unique_ptr<Server>> m_servers;
    std::unordered_map<Id, std::unique_ptr<Client>> m_clients;
};
