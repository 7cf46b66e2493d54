#include "Registrar.h"

#include "common/Answers.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipUnsupportedHeader.h"
#include "sipobject/messages/KxSipReading.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "util/KxHexEncoding.h"

#include <log4cplus/loggingmacros.h>

namespace {

constexpr std::size_t kLargestRequest = 4096; // bytes; limits what one request can add to the tables

log4cplus::Logger& logger() {
    static log4cplus::Logger logger = log4cplus::Logger::getInstance("registrar");
    return logger;
}

/** Returns the user of an address. The RFC grammar keeps escapes, so that they are resolved here. */
std::string userOf(const KxSipURL& address) {
    std::string_view text = address.getUser().view();
    std::string user;
    for (; !text.empty(); text.remove_prefix(1)) {
        if (text.front() == '%' && text.size() > 2 && KxSipGrammar::sReadsURLsStrictly()) {
            user += KxHexEncoding::fromHex(text[1], text[2]);
            text.remove_prefix(2);
        } else {
            user += text.front();
        }
    }
    return user;
}

} // namespace

Registrar::Reply Registrar::answer(std::string_view datagram, const std::string& host, unsigned port) {
    try {
        const KxSipReading reading = KxSipReading::sRead(datagram);
        if (!reading.isUsable() || lacksValues(reading)) { // a line that was dropped may be a Contact
            return refuse(reading.response(reading.isUsable() ? 400 : 0), host, port);
        }
        const KxHandle<KxSipRequest> request(reading.message->as<KxSipRequest>());
        if (request.isNil() || request->getMethod() == std::string_view("ACK")) {
            return {};
        }
        return {respond(request, datagram, host, port), replyPort(*request->getViaHeader(), port)};
    } catch (const KxHandle<KxException>& failure) {
        LOG4CPLUS_INFO(logger(),
                       "no answer to " << hostPort(host, port) << ": " << printable(failure->getExceptionMessage()));
    } catch (const std::exception& failure) {
        LOG4CPLUS_ERROR(logger(), "no answer to " << hostPort(host, port) << ": " << failure.what());
    }
    return {};
}

Registrar::Reply Registrar::refuse(const KxHandle<KxSipResponse>& response, const std::string& host, unsigned port) {
    if (response.isNil()) {
        return {};
    }
    response->getViaHeader()->setSource(host, port);
    return {response->getText(), replyPort(*response->getViaHeader(), port)};
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
            response = KxSipResponse::sBuild(*request, {.statusCode = 401});
            response->addHeader(m_authenticator.challenge(verdict.outcome == Outcome::Stale), false);
        }
    }
    response->getViaHeader()->setSource(host, port);
    std::string bytes = response->getText();
    if (verdict.outcome == Outcome::Accepted) {
        verdict.nonce->response = bytes;
    }
    LOG4CPLUS_INFO(logger(), printable(request->getMethod()) << " of " << hostPort(host, port) << ' ' << verdict.user
                                                             << " -> " << response->getStatusCode());
    return bytes;
}

/** Returns the response to a request that the registrar does not serve, else nil. */
KxHandle<KxSipResponse> Registrar::refuse(const KxHandle<KxSipRequest>& request, std::size_t size) const {
    if (size > kLargestRequest) {
        return KxSipResponse::sBuild(*request, {.statusCode = 513});
    }
    if (isSecure(*request)) {
        return KxSipResponse::sBuild(*request, {.statusCode = 416});
    }
    const std::string_view method = request->getMethod();
    if (method == "CANCEL") { // requests are answered at once, so there is nothing to cancel
        return KxSipResponse::sBuild(*request, {.statusCode = 481});
    }
    if (method != "REGISTER") {
        const bool isUnknown = request->as<KxSipUnknownRequest>() != nullptr;
        const KxHandle<KxSipResponse> response = KxSipResponse::sBuild(*request, {.statusCode = isUnknown ? 501 : 405});
        response->addHeader(KxMake<KxSipAllowHeader>("REGISTER"), false);
        return response;
    }
    if (const auto* const extension = request->first<KxSipRequireHeader>()) {
        const KxHandle<KxSipResponse> response = KxSipResponse::sBuild(*request, {.statusCode = 420});
        response->addHeader(KxMake<KxSipUnsupportedHeader>(extension->getOptionTag()), false);
        return response;
    }
    return {};
}

/** Returns the response to a REGISTER of this user. A user may change only the own address. */
KxHandle<KxSipResponse> Registrar::serve(const KxHandle<KxSipRequest>& request, const std::string& user) {
    const KxHandle<KxSipURL> address = request->getToHeader()->getNameAddress()->getURL();
    const bool isOwn = !address.isNil() && userOf(*address) == user;
    const int code = isOwn ? m_bindings.update(user, *request) : 403;
    KxHandle<KxSipResponse> response = KxSipResponse::sBuild(*request, {.statusCode = code});
    if (code == 200) {
        m_bindings.addTo(*response, user);
    }
    return response;
}
