#include "UserAgent.h"

#include "Log.h"

#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipParseKeepAliveException.h"
#include "sipobject/headers/KxSipAcceptHeader.h"
#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/headers/KxSipUnsupportedHeader.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "util/KxByteArrayInputStream.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t kMaxCalls = 4096;

void addAllow(KxSipMessage& message) {
    for (const char* method : Call::kAllow) {
        message.addHeader(KxMake<KxSipAllowHeader>(method), false);
    }
}

/** The headers that an answer needs, of a request that can't be read as a whole. Nil where nothing is to be answered. */
KxHandle<KxSipRequest> salvage(std::string_view bytes) {
    const std::string_view line = bytes.substr(0, bytes.find('\n'));
    const std::string method(line.substr(0, line.find(' ')));
    if (method.empty() || method.size() > 31 || method.starts_with("SIP/") || method == "ACK") {
        return {};
    }
    KxByteArrayInputStream in(bytes.substr(std::min(line.size() + 1, bytes.size())));
    const auto request = KxMake<KxSipUnknownRequest>(method.c_str());
    while (in.available() != 0 && in.peek() != '\r' && in.peek() != '\n') {
        try {
            const auto header = KxSipHeader::sConstructFrom(in);
            const HeaderID id = header->getHeaderID();
            if (id == KxHeaderIDs::kVia) {
                request->addHeader(header, false);
            } else if (id <= KxHeaderIDs::kCallId && request->getHeaderByID(id).isNil()) {
                request->addSingleHeader(header, false);
            }
        } catch (const KxHandle<KxException>&) { // gone
        }
    }
    return request->getViaHeader().isNil() ? KxHandle<KxSipRequest>() : request;
}

} // namespace

void UserAgent::receive(std::string_view bytes, const Peer& from) {
    guarded("a message", [&] {
        KxHandle<KxSipMessage> message;
        try {
            KxByteArrayInputStream in(bytes);
            message = KxSipMessage::sConstructFrom(in);
        } catch (const KxHandle<KxSipParseKeepAliveException>&) {
            return;
        } catch (const KxHandle<KxException>& failure) {
            return refuseUnreadable(bytes, failure->getExceptionMessage(), from);
        }
        if (message->isResponse()) {
            return transactions.receive(KxHandleCast<KxSipResponse>(message));
        }
        if (!message->getViaHeader().isNil()) {
            noteSource(*message->getViaHeader(), hostOf(from.address), from.address.get_port_number());
            serve(KxHandleCast<KxSipRequest>(message), from);
        }
    });
}

/** What was thrown has no message with it, so the bytes are looked at once more. */
void UserAgent::refuseUnreadable(std::string_view bytes, const KxString& why, const Peer& from) {
    LOG4CPLUS_INFO(logger(), "unreadable, from " << hostOf(from.address) << ": " << printable(why));
    const Request request = salvage(bytes);
    if (!request.isNil()) {
        const bool isScheme = why == "Unsupported Uri Scheme";
        const bool isVersion = why == "Invalid SIP Version";
        noteSource(*request->getViaHeader(), hostOf(from.address), from.address.get_port_number());
        reply(makeResponse(isScheme ? 416 : isVersion ? 505 : 400, request), from);
    }
}

/** Without a transaction: the request, sent again, is answered again. */
void UserAgent::reply(const KxHandle<KxSipResponse>& response, const Peer& from) {
    Peer to = from;
    to.address.set_port_number(
        static_cast<u_short>(replyPort(*response->getViaHeader(), from.address.get_port_number())));
    transport.send(bytesOf(*response), to);
}

void UserAgent::serve(const Request& request, const Peer& from) {
    const std::string_view method = request->getMethod();
    const KxStatus status = request->getStatus();
    if (method == "ACK") {
        if (request->isValid()) {
            acknowledge(*request);
        }
        return;
    }
    if (status != KX_STATUS_VALID || transactions.isFull()) { // what could not be read need not have a key
        return reply(makeResponse(status != KX_STATUS_VALID ? 400 : 503, request), from);
    }
    Peer answersTo = from;
    answersTo.address.set_port_number(
        static_cast<u_short>(replyPort(*request->getViaHeader(), from.address.get_port_number())));
    const Transactions::Id id = Transactions::idOf(*request, method);
    if (!transactions.open(id, answersTo)) {
        return;
    }
    try {
        const KxHandle<KxSipResponse> refusal = refuse(request);
        if (refusal.isNil()) {
            dispatch(request, id, answersTo);
        } else {
            transactions.respond(id, refusal);
        }
    } catch (const KxHandle<KxException>&) {
        transactions.respond(id, makeResponse(500, request));
        throw;
    }
}

void UserAgent::acknowledge(const KxSipRequest& ack) {
    if (const std::shared_ptr<Call> call = find(ack)) {
        call->acknowledged(ack);
    } else {
        transactions.acknowledged(Transactions::idOf(ack, "INVITE")); // of a refusal
    }
}

/** The response to what can't be served, whoever it is for; else nil. */
KxHandle<KxSipResponse> UserAgent::refuse(const Request& request) const {
    unsigned code = 0;
    if (request->rejectedByStack(code) || !request->isValid()) {
        return makeResponse(code < 100 ? 400 : static_cast<int>(code), request);
    }
    const std::string_view method = request->getMethod();
    if (std::find(std::begin(Call::kAllow), std::end(Call::kAllow), method) == std::end(Call::kAllow)) {
        const bool isUnknown = !KxHandleCast<KxSipUnknownRequest>(request).isNil();
        const KxHandle<KxSipResponse> response = makeResponse(isUnknown ? 501 : 405, request);
        addAllow(*response);
        return response;
    }
    KxHandle<KxSipResponse> refusal;
    KxHandle<KxSipHeader> required = request->getHeaderByID(KxHeaderIDs::kRequire);
    for (; !required.isNil() && method != "CANCEL"; required = required->getNext()) {
        const KxString tag = KxHandleCast<KxSipRequireHeader>(required)->getOptionTag();
        if (tag != "100rel" && tag != "timer") {
            refusal = refusal.isNil() ? makeResponse(420, request) : refusal;
            refusal->addHeader(KxMake<KxSipUnsupportedHeader>(tag.c_str()), false);
        }
    }
    if (refusal.isNil() && request->getBodyLength() != 0 && request->getBodyType() != "application/sdp") {
        refusal = makeResponse(415, request);
        refusal->addHeader(KxMake<KxSipAcceptHeader>("application", "sdp"), false);
    }
    return refusal;
}

void UserAgent::dispatch(const Request& request, const Transactions::Id& id, const Peer& from) {
    const std::string_view method = request->getMethod();
    if (method == "CANCEL") {
        const Transactions::Id invite = Transactions::idOf(*request, "INVITE");
        transactions.respond(id, makeResponse(transactions.isOpen(invite) ? 200 : 481, request));
        transactions.cancel(invite);
    } else if (request->getToHeader()->isTagPresent()) {
        if (const std::shared_ptr<Call> call = find(*request)) {
            call->receive(request, id);
        } else {
            transactions.respond(id, makeResponse(481, request));
        }
    } else if (method == "OPTIONS") {
        const KxHandle<KxSipResponse> response = makeResponse(200, request);
        addAllow(*response);
        response->addHeader(KxMake<KxSipAcceptHeader>("application", "sdp"), false);
        response->addHeader(KxMake<KxSipSupportedHeader>("100rel"), false);
        response->addHeader(KxMake<KxSipSupportedHeader>("timer"), false);
        transactions.respond(id, response);
    } else if (method != "INVITE") {
        transactions.respond(id, makeResponse(481, request));
    } else if (const auto refusal = Call::refuseTimer(request); !refusal.isNil()) {
        transactions.respond(id, refusal);
    } else if (m_calls.size() >= kMaxCalls) {
        transactions.respond(id, makeResponse(503, request));
    } else {
        const auto call =
            std::make_shared<Callee>(*this, from, KxHandleCast<KxSipInviteMessage>(request), id, m_settings.ring);
        m_calls.emplace(call->tag(), call);
        call->begin();
    }
}

void UserAgent::call(const Peer& to, const Caller::Plan& plan) {
    const auto call = std::make_shared<Caller>(*this, to, plan);
    m_calls.emplace(call->tag(), call);
    call->begin();
}

void UserAgent::forget(const std::string& tag) {
    m_calls.erase(tag);
}

/** The call that the request belongs to; null where there is none. */
std::shared_ptr<Call> UserAgent::find(const KxSipRequest& request) const {
    const auto found = m_calls.find(std::string(request.getToHeader()->getTag().view()));
    return found != m_calls.end() && found->second->owns(request) ? found->second : nullptr;
}
