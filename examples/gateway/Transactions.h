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

/** The client and server transactions. Messages that may be lost are retransmitted until they are answered, and a
    retransmitted request is answered as before. Each transaction ends with its timers.
    [RFC 3261 17, RFC 3262 3, RFC 6026] */
class Transactions {
public:
    /** The identifier of a transaction: the key of the library, and the method, which is not part of the key. */
    using Id = std::string;
    /** Called with the responses to a request, and with repeated 2xx to an INVITE; with nil if no final response came
        in time. */
    using Answer = std::function<void(const KxHandle<KxSipResponse>& response)>;

    /** T1 is the estimate of a round trip, from which the other waits follow. [RFC 3261 17.1.1.1] */
    Transactions(Timers& timers, Transport& transport, std::chrono::milliseconds t1);
    ~Transactions();

    static Id idOf(const KxSipMessage& message, std::string_view method);
    /** Returns how long a message is retransmitted if no answer comes. */
    std::chrono::milliseconds patience() const { return 64 * m_t1; }

    // Server transactions, for requests that were received.

    /** Whether the request is a retransmission. If so, the last response, if there is one, is sent again. */
    bool repeat(const Id& id);
    /** Opens a transaction, which holds the place until it ends. */
    void open(const Id& id, const Peer& from, Quota::Place place);
    /** Returns the place of an open transaction, null for any other. */
    Quota::Place placeOf(const Id& id) const;
    /** Sends the response. A reliable response, or a final one to an INVITE, is retransmitted until it is acknowledged;
        `lost` is called if that does not happen in time. */
    void respond(const Id& id, const KxHandle<KxSipResponse>& response, std::function<void()> lost = {});
    bool isOpen(const Id& id) const { return m_servers.count(id) != 0; }
    /** Sets the work that a CANCEL of this INVITE calls as long as there is no final response. */
    void onCancel(const Id& id, std::function<void()> work);
    void cancel(const Id& id);
    /** To be called when the ACK or PRACK for the transaction came. */
    void acknowledged(const Id& id);

    // Client transactions, for requests that are sent.

    /** Sends the request, whose top Via must be ours. If an INVITE is refused, also sends the ACK. */
    void ask(const KxHandle<KxSipRequest>& request, const Peer& to, Answer answer);
    /** To be called with every response that came; one without a transaction is dropped. */
    void receive(const KxHandle<KxSipResponse>& response);

private:
    struct Server;
    struct Client;

    void sendAgain(Server& server, std::chrono::milliseconds wait, std::chrono::milliseconds longest);
    void sendAgain(Client& client, std::chrono::milliseconds wait);
    void expire(const Id& id);
    void giveUp(const Id& id);
    void acknowledge(const Client& client, const KxHandle<KxSipResponse>& refusal);

    std::chrono::milliseconds longestWait() const { return 8 * m_t1; }     // T2, between two retransmissions
    std::chrono::milliseconds longestJourney() const { return 10 * m_t1; } // T4, of a message in the network

    Timers& m_timers;
    Transport& m_transport;
    std::chrono::milliseconds m_t1;
    std::unordered_map<Id, std::unique_ptr<Server>> m_servers;
    std::unordered_map<Id, std::unique_ptr<Client>> m_clients;
};
