#include "Call.h"

#include "Log.h"

#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipMinSEHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipSessionExpiresHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/messages/KxSipAckMessage.h"
#include "sipobject/messages/KxSipByeMessage.h"

#include <algorithm>
#include <utility>

namespace {

using std::chrono::seconds;

constexpr seconds kLongestCall{3600}; // also if the other side has disappeared

} // namespace

const char* const Call::kAllow[6] = {"INVITE", "ACK", "PRACK", "BYE", "CANCEL", "OPTIONS"};

Call::Call(CallHost& host, const Peer& peer, std::string tag)
    : m_host(host), m_peer(peer), m_tag(std::move(tag)), m_session(host.timers), m_longest(host.timers) {
    m_longest.start(kLongestCall, [this] { hangUp("lasts too long"); });
}

bool Call::owns(const KxSipRequest& request) const {
    return m_dialog && m_dialog->matches(request);
}

bool Call::isNext(const KxSipRequest& request) const {
    return request.getCSeqHeader()->getSeqNumber() > m_remoteSeq;
}

void Call::receive(const KxHandle<KxSipRequest>& request, const Transactions::Id& id) {
    const std::string_view method = request->getMethod();
    m_remoteSeq = request->getCSeqHeader()->getSeqNumber();
    if (method == "BYE") {
        respond(200, request, id);
        onBye();
        end();
        onEnd("ended by the other side");
    } else if (method == "PRACK") {
        respond(prack(*request), request, id);
    } else if (method != "INVITE") {
        respond(method == "OPTIONS" ? 200 : 405, request, id);
    } else if (!m_isAnswered || m_isRefreshing) {
        respond(491, request, id);
    } else if (const auto refusal = refuseTimer(request); !refusal.isNil()) {
        m_host.transactions.respond(id, refusal);
    } else {
        m_dialog->refresh(*request);
        m_host.transactions.acknowledged(m_inviteId); // the ACK was lost: a peer sends a re-INVITE only after it
        accept(request, id);
    }
}

int Call::prack(const KxSipRequest&) {
    return 481;
}

void Call::acknowledged(const KxSipRequest& ack) {
    if (ack.getCSeqHeader()->getSeqNumber() == m_inviteSeq) {
        m_host.transactions.acknowledged(m_inviteId);
        m_inviteSeq = 0;
    }
}

void Call::hangUp(const char* why) {
    if (m_isOver) { // the response to an earlier request came after the end
        return;
    }
    LOG4CPLUS_INFO(logger(), "hanging up: " << why);
    const auto self = shared_from_this();
    end();
    ask(KxSipByeMessage::sWithin(*m_dialog, {.via = via()}),
        [self, why](const KxHandle<KxSipResponse>&) { self->onEnd(why); });
}

void Call::end() {
    m_session.stop();
    m_longest.stop();
    m_isOver = true;
    m_host.forget(m_tag);
}

KxSipViaPart Call::via() const {
    return {.host = m_host.transport.host(),
            .port = m_host.transport.port(),
            .transport = m_peer.transport(),
            .rport = true};
}

void Call::ask(const KxHandle<KxSipRequest>& request, Transactions::Answer answer) {
    m_host.transactions.ask(request, m_peer, std::move(answer));
}

void Call::acknowledge(const KxSipInviteMessage& invite) {
    const std::uint32_t number = invite.getCSeqHeader()->getSeqNumber();
    if (m_ackSeq != number) {
        m_ack = KxSipAckMessage::sWithin(*m_dialog, invite, {.via = via()})->getText();
        m_ackSeq = number;
    }
    m_host.transport.send(m_ack, m_peer);
}

void Call::respond(int code, const KxHandle<KxSipRequest>& request, const Transactions::Id& id) {
    m_host.transactions.respond(id, KxSipResponse::sBuild(*request, {.statusCode = code}));
}

void Call::accept(const KxHandle<KxSipRequest>& invite, const Transactions::Id& id) {
    const KxHandle<KxSipResponse> ok =
        KxSipResponse::sBuild(*invite, {.contact = contact(), .contentType = "application/sdp", .body = session()});
    introduce(*ok);
    offerTimer(invite, ok);
    m_inviteSeq = invite->getCSeqHeader()->getSeqNumber();
    m_inviteId = id;
    m_isAnswered = true;
    m_host.transactions.respond(id, ok, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->hangUp("no ACK came");
        }
    });
}

std::string Call::contact() const {
    return "<sip:gateway@" + m_host.transport.hostPort() + (m_peer.isReliable() ? ";transport=tcp>" : ">");
}

void Call::introduce(KxSipMessage& message) {
    for (const char* method : kAllow) {
        message.addHeader(KxMake<KxSipAllowHeader>(method), false);
    }
    message.addHeader(KxMake<KxSipSupportedHeader>("100rel"), false);
    message.addHeader(KxMake<KxSipSupportedHeader>("timer"), false);
}

std::string Call::session() const {
    const std::string address = (m_host.transport.isIPv6() ? "IN IP6 " : "IN IP4 ") + m_host.transport.host();
    return "v=0\r\no=- 1 1 " + address + "\r\ns=-\r\nc=" + address +
           "\r\nt=0 0\r\nm=audio 9 RTP/AVP 0\r\na=inactive\r\n";
}

KxHandle<KxSipResponse> Call::refuseTimer(const KxHandle<KxSipRequest>& invite) {
    const auto asked = invite->getSessionExpiresHeader();
    if (asked.isNil() || asked->getDeltaSeconds() >= kMinSessionSeconds) {
        return {};
    }
    const KxHandle<KxSipResponse> refusal = KxSipResponse::sBuild(*invite, {.statusCode = 422});
    refusal->addHeader(KxMake<KxSipMinSEHeader>(kMinSessionSeconds), false);
    return refusal;
}

/** Grants the session timer that the INVITE asks for. Grants one even if it asks for none: otherwise the call would
    stay open if the peer disappears. The peer refreshes if it supports session timers and did not ask us to refresh. */
void Call::offerTimer(const KxHandle<KxSipRequest>& invite, const KxHandle<KxSipResponse>& ok) {
    const auto asked = invite->getSessionExpiresHeader();
    const auto* const least = invite->first<KxSipMinSEHeader>();
    std::uint32_t interval = m_host.times.sessionSeconds;
    if (!asked.isNil()) {
        interval = std::max({interval, kMinSessionSeconds, least == nullptr ? 0 : least->getDeltaSeconds()});
        interval = std::min(interval, asked->getDeltaSeconds());
    }
    const bool theyRefresh =
        invite->lists<KxSipSupportedHeader>("timer") && (asked.isNil() || !asked->isRefresherUAS());
    const auto granted = KxMake<KxSipSessionExpiresHeader>(interval);
    granted->setRefresher(theyRefresh ? KxSipSessionExpiresHeader::sUAC : KxSipSessionExpiresHeader::sUAS);
    ok->addHeader(granted, false);
    if (theyRefresh) {
        ok->addHeader(KxMake<KxSipRequireHeader>("timer"), false);
    }
    keepTime(interval, !theyRefresh);
}

void Call::followTimer(const KxSipResponse& ok, std::uint32_t asked) {
    const auto granted = ok.getSessionExpiresHeader();
    if (!granted.isNil()) {
        keepTime(std::max(granted->getDeltaSeconds(), kMinSessionSeconds), !granted->isRefresherUAS());
    } else if (asked != 0) { // a peer without session timers still answers re-INVITEs as long as it is there
        keepTime(asked, true);
    } else {
        m_session.stop();
    }
}

void Call::keepTime(std::uint32_t interval, bool weRefresh) {
    if (weRefresh) {
        m_session.start(seconds(interval / 2), [this, interval] { refresh(interval); });
    } else {
        m_session.start(seconds(interval - std::min(interval / 3, 32U)), [this] { hangUp("no refresh came"); });
    }
}

/** Sends a re-INVITE that changes nothing and only restarts the session timer. */
void Call::refresh(std::uint32_t interval) {
    const auto again = KxSipInviteMessage::sWithin(
        *m_dialog, {.contact = contact(), .via = via(), .contentType = "application/sdp", .body = session()});
    introduce(*again);
    const auto timer = KxMake<KxSipSessionExpiresHeader>(interval);
    timer->setRefresher(KxSipSessionExpiresHeader::sUAC);
    again->addHeader(timer, false);
    m_isRefreshing = true;
    ask(again, [self = shared_from_this(), again, interval](const KxHandle<KxSipResponse>& response) {
        const unsigned code = response.isNil() ? 408 : response->getStatusCode();
        if (code < 200) {
            return;
        }
        self->m_isRefreshing = false;
        if (code < 300) {
            self->m_dialog->refresh(*response);
            self->acknowledge(*again);
            self->followTimer(*response, interval);
        } else {
            self->hangUp("a refresh was refused");
        }
    });
}
