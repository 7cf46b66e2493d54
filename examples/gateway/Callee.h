#pragma once

#include "Call.h"

/** A call that came in: it rings for a while and is answered. */
class Callee final : public Call {
public:
    /** The INVITE's transaction is open. */
    Callee(CallHost& host, const Peer& peer, const KxHandle<KxSipInviteMessage>& invite, const Transactions::Id& id);

    void begin();

protected:
    int prack(const KxSipRequest& request) override;
    void onBye() override;

private:
    void ring();
    void answer();
    void giveUp(int code);
    std::function<void()> givingUp(int code);

    KxHandle<KxSipInviteMessage> m_invite;
    Timer m_ringing;
    std::uint32_t m_rseq = 0; // of the reliable 180, while no PRACK came
    bool m_isDue = false;     // to be answered, once the PRACK came
};
