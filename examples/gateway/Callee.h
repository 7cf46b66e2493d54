#pragma once

#include "Call.h"

/** An incoming call. It rings for a while and is then answered. */
class Callee final : public Call {
public:
    /** `id` is the INVITE's transaction, which must be open. */
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
    std::uint32_t m_rseq = 0; // of the reliable 180; 0 after its PRACK came
    bool m_isDue = false;     // rang long enough: is answered as soon as the PRACK came
};
