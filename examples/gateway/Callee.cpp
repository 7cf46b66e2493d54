#include "Callee.h"

#include "Log.h"

#include "sipobject/KxSipTag.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipRAckHeader.h"
#include "sipobject/headers/KxSipRSeqHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"

#include <cstdlib>

Callee::Callee(CallHost& host, const Peer& peer, const KxHandle<KxSipInviteMessage>& invite, const Transactions::Id& id)
    : Call(host, peer, KxSipTag::sRandom().c_str()), m_invite(invite), m_ringing(host.timers) {
    m_inviteId = id;
    m_inviteSeq = m_remoteSeq = invite->getCSeqHeader()->getSeqNumber();
}

void Callee::begin() {
    m_invite->getToHeader()->setTag(tag()); // for all responses that are made from the INVITE
    m_host.transactions.respond(m_inviteId, KxSipResponse::sBuild(*m_invite, {.statusCode = 100}));
    ring();
    m_ringing.start(m_host.times.ring, [this] {
        m_isDue = true;
        if (m_rseq == 0) {
            answer();
        }
    });
}

void Callee::ring() {
    const KxHandle<KxSipResponse> ringing = KxSipResponse::sBuild(*m_invite, {.statusCode = 180, .contact = contact()});
    m_dialog = KxSipDialog::sOfCallee(*m_invite, *ringing);
    if (m_invite->lists<KxSipSupportedHeader>("100rel") || m_invite->lists<KxSipRequireHeader>("100rel")) {
        m_rseq = static_cast<std::uint32_t>(std::rand()) / 2 + 1;
        ringing->addHeader(KxMake<KxSipRequireHeader>("100rel"), false);
        ringing->addHeader(KxMake<KxSipRSeqHeader>(m_rseq), false);
    }
    m_host.transactions.respond(m_inviteId, ringing, givingUp(504)); // if no PRACK comes
    m_host.transactions.onCancel(m_inviteId, givingUp(487));
}

int Callee::prack(const KxSipRequest& request) {
    const auto* const which = request.first<KxSipRAckHeader>();
    if (m_rseq == 0 || which == nullptr || which->getResponseNumber() != m_rseq ||
        which->getSeqNumber() != m_inviteSeq || which->getMethod() != "INVITE") {
        return 481;
    }
    m_rseq = 0;
    m_host.transactions.acknowledged(m_inviteId);
    if (m_isDue) {
        m_ringing.start(std::chrono::milliseconds(0), [this] { answer(); }); // after the response to the PRACK
    }
    return 200;
}

void Callee::answer() {
    accept(m_invite, m_inviteId);
}

/** Refuses the INVITE, unless it was already answered, and ends the call. */
void Callee::giveUp(int code) {
    if (!m_isAnswered) {
        const auto self = shared_from_this();
        m_ringing.stop();
        respond(code, m_invite, m_inviteId);
        end();
    }
}

std::function<void()> Callee::givingUp(int code) {
    return [weak = weak_from_this(), code] {
        if (const auto self = std::static_pointer_cast<Callee>(weak.lock())) {
            self->giveUp(code);
        }
    };
}

void Callee::onBye() {
    giveUp(487);
}
