#include "UserAgent.h"

#include "Log.h"

#include "sipobject/KxSipTag.h"
#include "sipobject/headers/KxSipAcceptHeader.h"
#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipRetryAfterHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/headers/KxSipUnsupportedHeader.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "sipobject/messages/KxSipUnknownRequest.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

namespace {

void addAllow(KxSipMessage& message) {
    for (const char* method : Call::kAllow) {
        message.addHeader(KxMake<KxSipAllowHeader>(method), false);
    }
}

/** Adds the source of a request to its top Via, and returns the address to which the response goes. */
Peer answersTo(KxSipViaHeader& via, const Peer& from) {
    const unsigned port = from.address.get_port_number();
    via.setSource(hostOf(from.address), port);
    Peer to = from;
    to.address.set_port_number(static_cast<u_short>(replyPort(via, port)));
    return to;
}

} // namespace

UserAgent::UserAgent(Timers& clock, Transport& wire, const Times& waits, const Limits& limits)
    : CallHost(clock, wire, waits),
      m_maxCalls(limits.calls),
      m_transactions(limits.transactions),
      m_secret(KxSipTag::sRandom().view()) {}

void UserAgent::receive(const KxSipFramer::Frame& frame, const Peer& from) {
    guarded("a message", [&] {
        const KxSipReading reading = KxSipReading::sRead(frame.bytes);
        if (frame.kind == KxSipFramer::Kind::Error) {
            return refuseUnframed(frame, reading, from);
        }
        if (!reading.isUsable()) {
            return refuseUnusable(reading, reading.errorText, 0, from);
        }
        if (auto* const response = reading.message->as<KxSipResponse>()) {
            return transactions.receive(KxHandle<KxSipResponse>(response));
        }
        if (lacksValues(reading)) {
            return refuseUnusable(reading, "a header line", 400, from);
        }
        const Request request(reading.message->as<KxSipRequest>());
        serve(request, answersTo(*request->getViaHeader(), from));
    });
}

/** Answers a request that can't be framed, unless its header section is incomplete. */
void UserAgent::refuseUnframed(const KxSipFramer::Frame& frame, const KxSipReading& reading, const Peer& from) const {
    if (frame.error == KxSipFramer::Error::HeaderSectionTooLarge) {
        LOG4CPLUS_INFO(logger(), "from " << hostOf(from.address) << ": " << frame.errorText());
        return;
    }
    refuseUnusable(reading, frame.errorText(), frame.error == KxSipFramer::Error::BodyTooLarge ? 513 : 400, from);
}

/** Answers a request that can't be processed, with the code; 0 for the one that suits its fault. */
void UserAgent::refuseUnusable(const KxSipReading& reading, std::string_view why, int code, const Peer& from) const {
    if (!why.empty()) {
        LOG4CPLUS_INFO(logger(), "unreadable, from " << hostOf(from.address) << ": " << printable(why));
    }
    if (const auto response = reading.response(code); !response.isNil()) {
        const Peer to = answersTo(*response->getViaHeader(), from);
        setTag(*response, *(reading.message.isNil() ? reading.salvaged : reading.message));
        transport.send(response->getText(), to);
    }
}

/** Answers without a transaction. */
void UserAgent::reply(const KxHandle<KxSipResponse>& response, const Request& request, const Peer& from) {
    setTag(*response, *request);
    transport.send(response->getText(), from);
}

/** Gives the response to a retransmitted request the same To tag again, unless the request has one. */
void UserAgent::setTag(KxSipResponse& response, const KxSipMessage& request) const {
    const auto to = request.getToHeader();
    const auto ours = response.getToHeader(); // nil if that of the request is unfit to be sent back
    if (!to.isNil() && !ours.isNil() && !to->isTagPresent()) {
        const auto callId = request.getCallIdHeader();
        const std::string_view branch = request.getViaHeader()->getBranch();
        const std::size_t hash = std::hash<std::string>()(
            std::string(m_secret).append(callId.isNil() ? KxString() : callId->getCallId()).append(branch));
        ours->setTag(std::to_string(hash));
    }
}

void UserAgent::serve(const Request& request, const Peer& from) {
    const std::string_view method = request->getMethod();
    if (method == "ACK") {
        return acknowledge(*request);
    }
    const Transactions::Id id = Transactions::idOf(*request, method);
    if (transactions.repeat(id)) {
        return;
    }
    if (const auto refusal = refuse(request); !refusal.isNil()) {
        return reply(refusal, request, from);
    }
    try {
        dispatch(request, id, from);
    } catch (const KxHandle<KxException>&) {
        transactions.respond(id, KxSipResponse::sBuild(*request, {.statusCode = 500}));
        throw;
    }
}

void UserAgent::acknowledge(const KxSipRequest& ack) {
    if (const std::shared_ptr<Call> call = find(ack)) {
        call->acknowledged(ack);
    } else {
        transactions.acknowledged(Transactions::idOf(ack, "INVITE")); // the ACK of a refusal
    }
}

/** Returns the response to a request that can't be served in or outside a dialog, else nil. */
KxHandle<KxSipResponse> UserAgent::refuse(const Request& request) const {
    const std::string_view method = request->getMethod();
    if (std::find(std::begin(Call::kAllow), std::end(Call::kAllow), method) == std::end(Call::kAllow)) {
        const bool isUnknown = request->as<KxSipUnknownRequest>() != nullptr;
        const KxHandle<KxSipResponse> response = KxSipResponse::sBuild(*request, {.statusCode = isUnknown ? 501 : 405});
        addAllow(*response);
        return response;
    }
    if (isSecure(*request)) {
        return KxSipResponse::sBuild(*request, {.statusCode = 416});
    }
    KxHandle<KxSipResponse> refusal;
    for (const KxSipRequireHeader& required : request->values<KxSipRequireHeader>()) {
        const KxString& tag = required.getOptionTag();
        if (method != "CANCEL" && tag != "100rel" && tag != "timer") {
            refusal = refusal.isNil() ? KxSipResponse::sBuild(*request, {.statusCode = 420}) : refusal;
            refusal->addHeader(KxMake<KxSipUnsupportedHeader>(tag), false);
        }
    }
    if (refusal.isNil() && request->getBodyLength() != 0 && request->getBodyType() != "application/sdp") {
        refusal = KxSipResponse::sBuild(*request, {.statusCode = 415});
        refusal->addHeader(KxMake<KxSipAcceptHeader>("application", "sdp"), false);
    }
    return refusal;
}

void UserAgent::dispatch(const Request& request, const Transactions::Id& id, const Peer& from) {
    const std::string_view method = request->getMethod();
    if (method == "CANCEL") {
        cancel(request, id, from);
    } else if (const std::shared_ptr<Call> call = find(*request)) {
        serveWithin(*call, request, id, from);
    } else if (request->getToHeader()->isTagPresent() || (method != "INVITE" && method != "OPTIONS")) {
        reply(KxSipResponse::sBuild(*request, {.statusCode = 481}), request, from);
    } else if (isFull()) {
        reply(makeLater(503, request), request, from);
    } else if (method == "OPTIONS") {
        reply(makeOptions(request), request, from);
    } else {
        invite(request, id, from);
    }
}

void UserAgent::cancel(const Request& request, const Transactions::Id& id, const Peer& from) {
    const Transactions::Id cancelled = Transactions::idOf(*request, "INVITE");
    if (Quota::Place place = transactions.placeOf(cancelled)) { // it shares the INVITE's place, and is never refused
        transactions.open(id, from, std::move(place));
        transactions.respond(id, KxSipResponse::sBuild(*request, {.statusCode = 200}));
        transactions.cancel(cancelled);
    } else {
        reply(KxSipResponse::sBuild(*request, {.statusCode = 481}), request, from);
    }
}

void UserAgent::serveWithin(Call& call, const Request& request, const Transactions::Id& id, const Peer& from) {
    if (!call.isNext(*request)) {
        reply(KxSipResponse::sBuild(*request, {.statusCode = 500}), request, from);
    } else if (call.requests().isFull() && request->getMethod() != std::string_view("BYE")) {
        reply(makeLater(500, request), request, from);
    } else {
        transactions.open(id, from, call.requests().take());
        call.receive(request, id);
    }
}

void UserAgent::invite(const Request& request, const Transactions::Id& id, const Peer& from) {
    if (const auto refusal = Call::refuseTimer(request); !refusal.isNil()) {
        return reply(refusal, request, from);
    }
    if (!request->has<KxSipContactHeader>()) { // makes no dialog [RFC 3261 8.1.1.8]
        return reply(KxSipResponse::sBuild(*request, {.statusCode = 400}), request, from);
    }
    transactions.open(id, from, m_transactions.take());
    const auto call =
        std::make_shared<Callee>(*this, from, KxHandle<KxSipInviteMessage>(request->as<KxSipInviteMessage>()), id);
    call->begin(); // before the call is stored: one that can't begin must not stay
    m_calls.emplace(call->tag(), call);
}

bool UserAgent::isFull() const {
    return m_transactions.isFull() || m_calls.size() >= m_maxCalls;
}

/** Returns a refusal with Retry-After. After that time every message that now waits for an answer has got one or was
    given up. */
KxHandle<KxSipResponse> UserAgent::makeLater(int code, const Request& request) const {
    const KxHandle<KxSipResponse> response = KxSipResponse::sBuild(*request, {.statusCode = code});
    const auto wait = std::chrono::ceil<std::chrono::seconds>(transactions.patience());
    response->addHeader(KxMake<KxSipRetryAfterHeader>(static_cast<std::uint32_t>(wait.count())), false);
    return response;
}

/** Returns the response to OPTIONS, with the methods, body types and extensions that an INVITE may use.
    [RFC 3261 11.2] */
KxHandle<KxSipResponse> UserAgent::makeOptions(const Request& request) const {
    const KxHandle<KxSipResponse> response = KxSipResponse::sBuild(*request, {.statusCode = 200});
    addAllow(*response);
    response->addHeader(KxMake<KxSipAcceptHeader>("application", "sdp"), false);
    response->addHeader(KxMake<KxSipSupportedHeader>("100rel"), false);
    response->addHeader(KxMake<KxSipSupportedHeader>("timer"), false);
    return response;
}

void UserAgent::call(const Peer& to, const Caller::Plan& plan) {
    const auto call = std::make_shared<Caller>(*this, to, plan);
    m_calls.emplace(call->tag(), call);
    call->begin();
}

void UserAgent::forget(const std::string& tag) {
    m_calls.erase(tag);
}

/** Returns the call to which the request belongs, null if there is none. */
std::shared_ptr<Call> UserAgent::find(const KxSipRequest& request) const {
    const auto found = m_calls.find(std::string(request.getToHeader()->getTag().view()));
    return found != m_calls.end() && found->second->owns(request) ? found->second : nullptr;
}
