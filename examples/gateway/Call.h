#pragma once

#include "Transactions.h"

#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipResponseParts.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/** The parts of the program that calls use. */
class CallHost {
public:
    struct Times {
        std::chrono::milliseconds t1{500};   ///< Estimate of a round trip.
        std::chrono::milliseconds ring{200}; ///< How long a call rings before it is answered.
        std::uint32_t sessionSeconds = 1800; ///< The session timer of calls that ask for none or a longer one.
    };

    CallHost(Timers& clock, Transport& wire, const Times& waits)
        : timers(clock), transport(wire), transactions(clock, wire, waits.t1), times(waits) {}
    virtual ~CallHost() = default;

    /** Removes the call from the list by its tag: its requests are not served any more. Pointers to the call keep it
        alive. */
    virtual void forget(const std::string& tag) = 0;

    Timers& timers;
    Transport& transport;
    Transactions transactions;
    const Times times;
};

/** One call: a dialog and its session timer. The derived classes Callee and Caller begin it. Requests within the dialog
    are sent to the address from which the call came or to which it was made. So the Contact of a peer can't make us
    look up names or send elsewhere. [RFC 3261 12 to 15, RFC 4028] */
class Call : public std::enable_shared_from_this<Call> {
public:
    static constexpr std::uint32_t kMinSessionSeconds = 90;
    static constexpr std::size_t kMaxRequests = 32; // enough for one request per second, each kept for 32 seconds
    static const char* const kAllow[6];

    virtual ~Call() = default;

    /** Our tag in the dialog identifier. */
    const std::string& tag() const { return m_tag; }
    /** Whether the request, whose To tag is ours, belongs to this dialog. */
    bool owns(const KxSipRequest& request) const;
    /** Whether the CSeq number is higher than those of all requests served. */
    bool isNext(const KxSipRequest& request) const;
    /** The quota of open requests within the dialog. */
    const Quota& requests() const { return m_requests; }
    /** Serves the next request within the dialog, other than ACK. */
    void receive(const KxHandle<KxSipRequest>& request, const Transactions::Id& id);
    /** To be called when the ACK of a 2xx came. */
    void acknowledged(const KxSipRequest& ack);
    /** Ends the call with a BYE. */
    void hangUp(const char* why);

    /** Returns 422 if the session interval that the INVITE asks for is too short, else nil. */
    static KxHandle<KxSipResponse> refuseTimer(const KxHandle<KxSipRequest>& invite);

protected:
    Call(CallHost& host, const Peer& peer, std::string tag);

    /** Serves a PRACK and returns the status code of the response. */
    virtual int prack(const KxSipRequest& request);
    /** Called when the other side has ended the call. */
    virtual void onBye() {}
    /** Called when the call is over and our BYE, if there was one, is answered. */
    virtual void onEnd(const char*) {}

    /** Our Via. */
    KxSipViaPart via() const;
    /** Sends a request. */
    void ask(const KxHandle<KxSipRequest>& request, Transactions::Answer answer);
    /** Sends the ACK of the 2xx to an INVITE or re-INVITE within the dialog; for a repeated 2xx the same ACK again. */
    void acknowledge(const KxSipInviteMessage& invite);
    /** Answers an INVITE or re-INVITE with 200 and a session. */
    void accept(const KxHandle<KxSipRequest>& invite, const Transactions::Id& id);
    void respond(int code, const KxHandle<KxSipRequest>& request, const Transactions::Id& id);
    /** Adds Allow and Supported to an INVITE or to a response to one. */
    static void introduce(KxSipMessage& message);
    std::string contact() const;
    /** Returns the same inactive session every time; a real host describes its media. [RFC 4566] */
    std::string session() const;
    /** Starts the session timer after a 2xx to our INVITE. `asked` is the interval, in seconds, of the INVITE; 0 for
        none. */
    void followTimer(const KxSipResponse& ok, std::uint32_t asked);
    /** Stops the timers of the call and removes it from the host's list. Only our BYE may still follow. */
    void end();

    CallHost& m_host;
    Peer m_peer;
    std::string m_tag;
    std::optional<KxSipDialog> m_dialog;
    std::uint32_t m_remoteSeq = 0;
    std::uint32_t m_inviteSeq = 0; // of the last INVITE that we received; 0 after its ACK came
    Transactions::Id m_inviteId;
    bool m_isAnswered = false; // the first INVITE was answered, by us or by the peer

private:
    void offerTimer(const KxHandle<KxSipRequest>& invite, const KxHandle<KxSipResponse>& ok);
    void keepTime(std::uint32_t seconds, bool weRefresh);
    void refresh(std::uint32_t seconds);

    std::string m_ack;
    std::uint32_t m_ackSeq = 0;
    bool m_isRefreshing = false;
    bool m_isOver = false;
    Quota m_requests{kMaxRequests};
    Timer m_session;
    Timer m_longest;
};
