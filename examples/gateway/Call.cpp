#include "Call.h"

#include "Log.h"

#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipMaxForwardsHeader.h"
#include "sipobject/headers/KxSipMinSEHeader.h"
#include "sipobject/headers/KxSipRecordRouteHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipRouteHeader.h"
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
    return !m_remote.isNil() && request.getCallIdHeader()->getCallId() == m_callId &&
           request.getFromHeader()->getTag() == m_remote->getTag();
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
        if (const auto contact = request->getContactHeader(); !contact.isNil() && !contact->getURL().isNil()) {
            m_target = contact->getURL();
        }
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
    ask(makeBye(), [self, why](const KxHandle<KxSipResponse>&) { self->onEnd(why); });
}

/** Builds the BYE from its parts. The library derives one from an INVITE too, but only for a caller with a SIP URL. */
KxHandle<KxSipRequest> Call::makeBye() const {
    return KxMake<KxSipByeMessage>(KxCopy(m_local), KxCopy(m_remote), KxHandle<KxSipContactHeader>(), m_callId.c_str(),
                                   1U, nullptr, nullptr, 0U);
}

void Call::end() {
    m_session.stop();
    m_longest.stop();
    m_isOver = true;
    m_host.forget(m_tag);
}

void Call::establish(const KxHandle<KxSipFromHeader>& local, const KxHandle<KxSipToHeader>& remote,
                     const KxSipMessage& message, bool routesAreReversed) {
    m_local = KxCopy(local);
    m_remote = KxCopy(remote);
    m_callId = message.getCallIdHeader()->getCallId();
    if (const auto contact = message.getContactHeader(); !contact.isNil() && !contact->getURL().isNil()) {
        m_target = contact->getURL();
    }
    m_routes.clear();
    for (const KxSipRecordRouteHeader& hop : message.values<KxSipRecordRouteHeader>()) {
        m_routes.push_back(KxMake<KxSipRouteHeader>(hop.getNameAddress()));
    }
    if (routesAreReversed) {
        std::reverse(m_routes.begin(), m_routes.end());
    }
}

void Call::address(KxSipRequest& request) const {
    if (!m_target.isNil()) {
        request.setURI(m_target);
    }
    for (const KxHandle<KxSipHeader>& route : m_routes) {
        request.addSingleHeader(route, false);
    }
    request.addHeader(KxMake<KxSipMaxForwardsHeader>(70U), false);
    request.insertViaHeader(m_host.transport.host().c_str(), m_host.transport.port(), m_peer.transport());
    request.getViaHeader()->setBranchRFC3261();
    request.getViaHeader()->setParameter("rport", KxString(""));
}

void Call::ask(const KxHandle<KxSipRequest>& request, Transactions::Answer answer) {
    request->getCSeqHeader()->setSeqNumber(++m_localSeq);
    address(*request);
    m_host.transactions.ask(request, m_peer, std::move(answer));
}

void Call::acknowledge(const KxHandle<KxSipResponse>& ok) {
    if (m_ackSeq != ok->getCSeqHeader()->getSeqNumber()) {
        const auto ack = KxMake<KxSipAckMessage>(ok, nullptr, nullptr, 0U);
        address(*ack);
        m_ack = bytesOf(*ack);
        m_ackSeq = ok->getCSeqHeader()->getSeqNumber();
    }
    m_host.transport.send(m_ack, m_peer);
}

void Call::respond(int code, const KxHandle<KxSipRequest>& request, const Transactions::Id& id) {
    m_host.transactions.respond(id, makeResponse(code, request));
}

void Call::accept(const KxHandle<KxSipRequest>& invite, const Transactions::Id& id) {
    const KxHandle<KxSipResponse> ok = makeResponse(200, invite);
    introduce(*ok);
    addSession(*ok);
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
    const std::string address = m_host.transport.host() + ':' + std::to_string(m_host.transport.port());
    return "<sip:gateway@" + address + (m_peer.isReliable() ? ";transport=tcp>" : ">");
}

void Call::introduce(KxSipMessage& message) const {
    if (message.getContactHeader().isNil()) {
        message.addHeader(KxMake<KxSipContactHeader>(contact().c_str()), false);
    }
    for (const char* method : kAllow) {
        message.addHeader(KxMake<KxSipAllowHeader>(method), false);
    }
    message.addHeader(KxMake<KxSipSupportedHeader>("100rel"), false);
    message.addHeader(KxMake<KxSipSupportedHeader>("timer"), false);
}

/** Adds the same inactive session every time; a real host describes its media. [RFC 4566] */
void Call::addSession(KxSipMessage& message) const {
    const std::string& host = m_host.transport.host();
    const std::string text = "v=0\r\no=- 1 1 IN IP4 " + host + "\r\ns=-\r\nc=IN IP4 " + host +
                             "\r\nt=0 0\r\nm=audio 9 RTP/AVP 0\r\na=inactive\r\n";
    message.setBody(text.c_str(), "application/sdp");
}

KxHandle<KxSipResponse> Call::refuseTimer(const KxHandle<KxSipRequest>& invite) {
    const auto asked = invite->getSessionExpiresHeader();
    if (asked.isNil() || asked->getDeltaSeconds() >= kMinSessionSeconds) {
        return {};
    }
    const KxHandle<KxSipResponse> refusal = makeResponse(422, invite);
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
        lists<KxSipSupportedHeader>(*invite, "timer") && (asked.isNil() || !asked->isRefresherUAS());
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
    const auto again =
        KxMake<KxSipInviteMessage>(KxCopy(m_local), KxCopy(m_remote), KxMake<KxSipContactHeader>(contact().c_str()),
                                   m_callId.c_str(), 1U, nullptr, nullptr, 0U);
    introduce(*again);
    addSession(*again);
    const auto timer = KxMake<KxSipSessionExpiresHeader>(interval);
    timer->setRefresher(KxSipSessionExpiresHeader::sUAC);
    again->addHeader(timer, false);
    m_isRefreshing = true;
    ask(again, [self = shared_from_this(), interval](const KxHandle<KxSipResponse>& response) {
        const unsigned code = response.isNil() ? 408 : response->getStatusCode();
        if (code < 200) {
            return;
        }
        self->m_isRefreshing = false;
        if (code < 300) {
            self->acknowledge(response);
            self->followTimer(*response, interval);
        } else {
            self->hangUp("a refresh was refused");
        }
    });
}
