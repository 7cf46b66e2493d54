#pragma once

#include "Callee.h"
#include "Caller.h"

#include "sipobject/messages/KxSipReading.h"

#include <unordered_map>

/** A user-agent client and server: parses each message that is received, refuses the requests that it must refuse, and
    passes the others to its calls. Used by one thread. [RFC 3261 8.2]

    Input from the network is untrusted, so the state that requests can create is limited:
    - Outside a dialog only an accepted INVITE opens a transaction and a call, and a CANCEL of it opens one more
      transaction. Any other request is answered at once and nothing is stored; a retransmission is answered again. [RFC
      3261 8.2.7]
    - If the limit of these transactions or of calls is reached, a new INVITE gets 503 with Retry-After. So does
      OPTIONS, which asks whether an INVITE would be accepted.
    - Messages for open transactions and calls are served even then: retransmissions, ACK, CANCEL, and requests within a
      call. Each call has its own limit of open requests, so that one call can't use up the room of others. Above it
      requests get 500 with Retry-After; BYE is always served.
    - Every transaction and call ends without further input. A transaction has its timers. A call ends if its ACK does
      not come, if the session timer finds that the peer is gone, and after an hour. */
class UserAgent final : public CallHost {
public:
    struct Limits {
        std::size_t transactions = 16384; ///< Transactions opened outside a dialog.
        std::size_t calls = 4096;
    };

    UserAgent(Timers& clock, Transport& wire, const Times& waits, const Limits& limits);

    /** Serves a message that was received, or answers one that could not be framed. No input makes it throw. */
    void receive(const KxSipFramer::Frame& frame, const Peer& from);
    /** Makes a call. Throws KxException if its URI can't be parsed. */
    void call(const Peer& to, const Caller::Plan& plan);

private:
    using Request = KxHandle<KxSipRequest>;

    void forget(const std::string& tag) override;
    std::shared_ptr<Call> find(const KxSipRequest& request) const;
    void serve(const Request& request, const Peer& from);
    void dispatch(const Request& request, const Transactions::Id& id, const Peer& from);
    void cancel(const Request& request, const Transactions::Id& id, const Peer& from);
    void serveWithin(Call& call, const Request& request, const Transactions::Id& id, const Peer& from);
    void invite(const Request& request, const Transactions::Id& id, const Peer& from);
    void acknowledge(const KxSipRequest& ack);
    bool isFull() const;
    KxHandle<KxSipResponse> refuse(const Request& request) const;
    KxHandle<KxSipResponse> makeLater(int code, const Request& request) const;
    KxHandle<KxSipResponse> makeOptions(const Request& request) const;
    void refuseUnframed(const KxSipFramer::Frame& frame, const KxSipReading& reading, const Peer& from) const;
    void refuseUnusable(const KxSipReading& reading, std::string_view why, int code, const Peer& from) const;
    void setTag(KxSipResponse& response, const KxSipMessage& request) const;
    void reply(const KxHandle<KxSipResponse>& response, const Request& request, const Peer& from);

    std::size_t m_maxCalls;
    Quota m_transactions;
    std::string m_secret;                                           // makes our tags unpredictable
    std::unordered_map<std::string, std::shared_ptr<Call>> m_calls; // by our tag
};
