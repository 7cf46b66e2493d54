#include "Caller.h"

#include "Log.h"

#include "sipobject/KxSipTag.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipMinSEHeader.h"
#include "sipobject/headers/KxSipRSeqHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipSessionExpiresHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipByeMessage.h"
#include "sipobject/messages/KxSipCancelMessage.h"
#include "sipobject/messages/KxSipPrackMessage.h"

#include <utility>

Caller::Caller(CallHost& host, const Peer& peer, Plan plan)
    : Call(host, peer, KxSipTag::sRandom().c_str()),
      m_plan(std::move(plan)),
      m_cancelling(host.timers),
      m_talking(host.timers) {}

void Caller::begin() {
    const std::string from = contact() + ";tag=" + tag();
    const std::string to = '<' + m_plan.uri + '>';
    m_invite = KxSipInviteMessage::sBuild({.from = from,
                                           .to = to,
                                           .contact = contact(),
                                           .via = via(),
                                           .contentType = "application/sdp",
                                           .body = session()});
    introduce(*m_invite);
    if (m_plan.isReliable) {
        m_invite->addHeader(KxMake<KxSipRequireHeader>("100rel"), false);
    }
    if (m_plan.sessionSeconds != 0) {
        m_invite->addHeader(KxMake<KxSipSessionExpiresHeader>(m_plan.sessionSeconds), false);
    }
    invite();
}

void Caller::invite() {
    const auto self = std::static_pointer_cast<Caller>(shared_from_this());
    m_host.transactions.ask(m_invite, m_peer,
                            [self](const KxHandle<KxSipResponse>& response) { self->follow(response); });
}

void Caller::follow(const KxHandle<KxSipResponse>& response) {
    if (response.isNil()) {
        return fail("no answer", false);
    }
    m_plan.tell(std::to_string(response->getStatusCode()) + ' ' + printable(response->getReasonPhrase()));
    if (response->getStatusCode() < 200) {
        followProvisional(response);
    } else {
        followFinal(response);
    }
}

void Caller::followProvisional(const KxHandle<KxSipResponse>& response) {
    if (m_plan.cancelAfter && !m_isCancelled) {
        m_isCancelled = true;
        m_cancelling.start(*m_plan.cancelAfter, [this] { cancel(); });
    }
    const auto* const number = response->first<KxSipRSeqHeader>();
    if (number == nullptr || number->getResponseNumber() == 0 || !response->getToHeader()->isTagPresent()) {
        return;
    }
    if (m_rseq != 0 && number->getResponseNumber() != m_rseq + 1) {
        return; // a retransmission, or an earlier one was lost
    }
    m_rseq = number->getResponseNumber();
    if (!m_dialog || !m_dialog->matches(*response)) {
        m_dialog = KxSipDialog::sOfCaller(*m_invite, *response);
    }
    ask(KxSipPrackMessage::sFor(*m_dialog, *response, {.via = via()}), [](const KxHandle<KxSipResponse>&) {});
}

void Caller::followFinal(const KxHandle<KxSipResponse>& response) {
    const unsigned code = response->getStatusCode();
    m_cancelling.stop();
    if (code < 300) {
        if (!m_isAnswered) {
            m_isAnswered = true;
            if (m_dialog && m_dialog->matches(*response)) {
                m_dialog->confirm(*response);
            } else {
                m_dialog = KxSipDialog::sOfCaller(*m_invite, *response);
            }
            followTimer(*response, m_plan.sessionSeconds);
            m_talking.start(m_plan.cancelAfter ? std::chrono::milliseconds(0) : m_plan.duration,
                            [this] { hangUp("as planned"); });
        }
        acknowledge(*m_invite);
        return;
    }
    const auto* const least = response->first<KxSipMinSEHeader>();
    const auto timer = m_invite->getSessionExpiresHeader();
    if (code == 422 && least != nullptr && !timer.isNil() && timer->getDeltaSeconds() < least->getDeltaSeconds()) {
        m_invite = KxCopy(m_invite); // a new transaction
        m_invite->getSessionExpiresHeader()->setDeltaSeconds(least->getDeltaSeconds());
        m_invite->getCSeqHeader()->setSeqNumber(m_invite->getCSeqHeader()->getSeqNumber() + 1);
        m_invite->getViaHeader()->setBranchRFC3261();
        return invite();
    }
    fail("refused", code == 487 && m_plan.cancelAfter);
}

void Caller::cancel() {
    ask(KxSipCancelMessage::sFor(*m_invite), [](const KxHandle<KxSipResponse>&) {});
}

void Caller::fail(const std::string& why, bool isDone) {
    m_plan.tell(why);
    end();
    m_plan.end(isDone);
}

void Caller::onEnd(const char* why) {
    m_talking.stop();
    m_plan.tell(why);
    m_plan.end(!m_plan.cancelAfter);
}
