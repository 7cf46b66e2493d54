#include "Registrar.h"

#include "common/Answers.h"
#include "sipobject/KxSipParseKeepAliveException.h"
#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipUnsupportedHeader.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "util/KxByteArrayInputStream.h"

#include <log4cplus/loggingmacros.h>

namespace {

constexpr std::size_t kLargestRequest = 4096; // bytes; limits what one request can add to the tables

log4cplus::Logger& logger() {
    static log4cplus::Logger logger = log4cplus::Logger::getInstance("registrar");
    return logger;
}

} // namespace

Registrar::Reply Registrar::answer(std::string_view datagram, const std::string& host, unsigned port) {
    try {
        KxByteArrayInputStream in(datagram);
        const auto request = KxHandleCast<KxSipRequest>(KxSipMessage::sConstructFrom(in));
        if (request.isNil() || request->getViaHeader().isNil() || request->getMethod() == std::string_view("ACK")) {
            return {};
        }
        return {respond(request, datagram, host, port), replyPort(*request->getViaHeader(), port)};
    } catch (const KxHandle<KxSipParseKeepAliveException>&) {
        return {};
    } catch (const KxHandle<KxException>& failure) {
        LOG4CPLUS_INFO(logger(),
                       "no answer to " << host << ':' << port << ": " << printable(failure->getExceptionMessage()));
    } catch (const std::exception& failure) {
        LOG4CPLUS_ERROR(logger(), "no answer to " << host << ':' << port << ": " << failure.what());
    }
    return {};
}

std::string Registrar::respond(const KxHandle<KxSipRequest>& request, std::string_view datagram,
                               const std::string& host, unsigned port) {
    using Outcome = Authenticator::Outcome;
    Authenticator::Verdict verdict;
    KxHandle<KxSipResponse> response = refuse(request, datagram.size());
    if (response.isNil()) {
        verdict = m_authenticator.judge(*request);
        if (verdict.outcome == Outcome::Repeated) {
            return verdict.nonce->response;
        }
        if (verdict.outcome == Outcome::Accepted) {
            response = serve(request, verdict.user);
        } else {
            response = makeResponse(401, request);
            response->addHeader(m_authenticator.challenge(verdict.outcome == Outcome::Stale), false);
        }
    }
    noteSource(*response->getViaHeader(), host, port);
    std::string bytes = bytesOf(*response);
    if (verdict.outcome == Outcome::Accepted) {
        verdict.nonce->response = bytes;
    }
    LOG4CPLUS_INFO(logger(), printable(request->getMethod()) << " of " << host << ':' << port << ' ' << verdict.user
                                                             << " -> " << response->getStatusCode());
    return bytes;
}

/** Returns the response to a request that the registrar does not serve, else nil. */
KxHandle<KxSipResponse> Registrar::refuse(const KxHandle<KxSipRequest>& request, std::size_t size) const {
    unsigned code = 0;
    if (size > kLargestRequest) {
        return makeResponse(513, request);
    }
    if (request->rejectedByStack(code)) { // codes below 100 mean that a part could not be read
        return makeResponse(code < 100 ? 400 : static_cast<int>(code), request);
    }
    const std::string_view method = request->getMethod();
    if (method == "CANCEL") { // requests are answered at once, so there is nothing to cancel
        return makeResponse(481, request);
    }
    if (method != "REGISTER") {
        const bool isUnknown = dynamic_cast<const KxSipUnknownRequest*>(request.get()) != nullptr;
        const KxHandle<KxSipResponse> response = makeResponse(isUnknown ? 501 : 405, request);
        response->addHeader(KxMake<KxSipAllowHeader>("REGISTER"), false);
        return response;
    }
    if (const auto* const extension = request->first<KxSipRequireHeader>()) {
        const KxHandle<KxSipResponse> response = makeResponse(420, request);
        response->addHeader(KxMake<KxSipUnsupportedHeader>(extension->getOptionTag().c_str()), false);
        return response;
    }
    return {};
}

/** Returns the response to a REGISTER of this user. A user may change only the own address. */
KxHandle<KxSipResponse> Registrar::serve(const KxHandle<KxSipRequest>& request, const std::string& user) {
    const KxHandle<KxSipURL> address = request->getToHeader()->getNameAddress()->getURL();
    const bool isOwn = !address.isNil() && address->getUser() == user;
    const int code = isOwn ? m_bindings.update(user, *request) : 403;
    KxHandle<KxSipResponse> response = makeResponse(code, request);
    if (code == 200) {
        m_bindings.addTo(*response, user);
    }
    return response;
}
