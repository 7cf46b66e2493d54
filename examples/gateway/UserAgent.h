#pragma once

#include "Callee.h"
#include "Caller.h"

#include <unordered_map>

/** Both sides of a user agent: reads what comes, refuses what it must, and brings the rest to its calls. Used by one
    thread. [RFC 3261 8.2]

    Anybody may send anything, so all that a request leaves here has a limit:
    - Outside a dialog only an INVITE that is taken opens a transaction and a call, and a CANCEL of it one more. All
      else is answered at once and forgotten; when it comes again, it is answered again. [RFC 3261 8.2.7]
    - When as many of these transactions or calls are open as there may be, a new INVITE gets 503 with Retry-After, and
      so does OPTIONS, which asks whether there would be room.
    - What belongs to something that is open is served all the same: what is sent again, ACK, CANCEL, and requests
      within a call. Of these a call has its own number, so that one can't take the room of others; over it they
      get 500 with Retry-After, BYE never does.
    - All that is open ends by itself. A transaction has its timers. A call ends when its ACK does not come, when the
      session timer finds that nobody is there, and after an hour. */
class UserAgent final : public CallHost {
public:
    struct Limits {
        std::size_t transactions = 16384; ///< Those that were opened outside a dialog.
        std::size_t calls = 4096;
    };

    UserAgent(Timers& clock, Transport& wire, const Times& waits, const Limits& limits);

    /** A message that came. Throws nothing that a peer could cause. */
    void receive(std::string_view bytes, const Peer& from);
    /** Makes a call. Throws KxException for a URI that can't be read. */
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
    void refuseUnreadable(std::string_view bytes, const KxString& why, const Peer& from);
    void reply(const KxHandle<KxSipResponse>& response, const Request& request, const Peer& from);

    std::size_t m_maxCalls;
    Quota m_transactions;
    std::string m_secret;                                           // so that nobody knows our tags beforehand
    std::unordered_map<std::string, std::shared_ptr<Call>> m_calls; // by our tag
};
