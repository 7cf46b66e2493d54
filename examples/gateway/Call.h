#pragma once

#include "Transactions.h"

#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipInviteMessage.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/** What calls need of the program around them. */
class CallHost {
public:
    struct Times {
        std::chrono::milliseconds t1{500};   ///< A round trip.
        std::chrono::milliseconds ring{200}; ///< How long a call rings before it is answered.
        std::uint32_t sessionSeconds = 1800; ///< The session timer of calls that ask for none or a longer one.
    };

    CallHost(Timers& clock, Transport& wire, const Times& waits)
        : timers(clock), transport(wire), transactions(clock, wire, waits.t1), times(waits) {}
    virtual ~CallHost() = default;

    /** Requests of the call are no longer for anybody; those who hold it keep it alive. */
    virtual void forget(const std::string& tag) = 0;

    Timers& timers;
    Transport& transport;
    Transactions transactions;
    const Times times;
};

/** One call: a dialog and its session timer. How it begins, Callee and Caller say. Requests within it go where the call
    came from or went to, so that no stranger's Contact makes us look up names or send elsewhere.
    [RFC 3261 12 to 15, RFC 4028] */
class Call : public std::enable_shared_from_this<Call> {
public:
    static constexpr std::uint32_t kMinSessionSeconds = 90;
    static constexpr std::size_t kMaxRequests = 32; // a request each second, and each is remembered for 32 of them
    static const char* const kAllow[6];

    virtual ~Call() = default;

    /** Our half of the dialog's name. */
    const std::string& tag() const { return m_tag; }
    /** Whether the request, which names our tag, is of this dialog. */
    bool owns(const KxSipRequest& request) const;
    /** Whether the request comes after all that were served. */
    bool isNext(const KxSipRequest& request) const;
    /** The requests within the dialog that are open. */
    const Quota& requests() const { return m_requests; }
    /** Serves the next request within the dialog, other than ACK. */
    void receive(const KxHandle<KxSipRequest>& request, const Transactions::Id& id);
    /** The ACK of a 2xx came. */
    void acknowledged(const KxSipRequest& ack);
    /** Ends the call with a BYE. */
    void hangUp(const char* why);

    /** 422, where the INVITE asks for too short a session; else nil. */
    static KxHandle<KxSipResponse> refuseTimer(const KxHandle<KxSipRequest>& invite);

protected:
    Call(CallHost& host, const Peer& peer, std::string tag);

    /** An answered or refused PRACK. */
    virtual int prack(const KxSipRequest& request);
    /** The other side has ended the call. */
    virtual void onBye() {}
    /** The call is over and our BYE, if there was one, is answered. */
    virtual void onEnd(const char*) {}
    /** The BYE of this side, to be addressed. */
    virtual KxHandle<KxSipRequest> makeBye() const;

    /** Names the dialog; a request of it would have these as From and To. */
    void establish(const KxHandle<KxSipFromHeader>& local, const KxHandle<KxSipToHeader>& remote,
                   const KxSipMessage& message, bool routesAreReversed);
    /** Adds who sends the request and over which hops it goes: Via, Route and Max-Forwards. */
    void address(KxSipRequest& request) const;
    /** Sends a request of the dialog. */
    void ask(const KxHandle<KxSipRequest>& request, Transactions::Answer answer);
    /** Sends the ACK of a 2xx, the same again for the same. */
    void acknowledge(const KxHandle<KxSipResponse>& ok);
    /** Answers an INVITE, the first or a later one, with 200 and a session. */
    void accept(const KxHandle<KxSipRequest>& invite, const Transactions::Id& id);
    void respond(int code, const KxHandle<KxSipRequest>& request, const Transactions::Id& id);
    /** Adds what an answer or an INVITE says about us. */
    void introduce(KxSipMessage& message) const;
    void addSession(KxSipMessage& message) const;
    std::string contact() const;
    /** The session timer of an INVITE of ours that was answered, and that asked for so many seconds; 0 for none. */
    void followTimer(const KxSipResponse& ok, std::uint32_t asked);
    /** Takes the call off the host's list. Of what is to be done later only our BYE remains. */
    void end();

    CallHost& m_host;
    Peer m_peer;
    std::string m_tag;
    std::uint32_t m_localSeq = 0;
    std::uint32_t m_remoteSeq = 0;
    std::uint32_t m_inviteSeq = 0; // of the last INVITE that we received, while no ACK came
    Transactions::Id m_inviteId;
    bool m_isAnswered = false; // the first INVITE, theirs or ours

private:
    void offerTimer(const KxHandle<KxSipRequest>& invite, const KxHandle<KxSipResponse>& ok);
    void keepTime(std::uint32_t seconds, bool weRefresh);
    void refresh(std::uint32_t seconds);

    KxHandle<KxSipFromHeader> m_local;
    KxHandle<KxSipToHeader> m_remote;
    KxString m_callId;
    KxHandle<KxURI> m_target;
    std::vector<KxHandle<KxSipHeader>> m_routes;
    std::string m_ack;
    std::uint32_t m_ackSeq = 0;
    bool m_isRefreshing = false;
    bool m_isOver = false;
    Quota m_requests{kMaxRequests};
    Timer m_session;
    Timer m_longest;
};

/** Whether one of the values of the option tags' header, however it is written, is this. */
bool lists(const KxSipMessage& message, HeaderID header, std::string_view optionTag);
