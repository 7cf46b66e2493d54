#include "tools/kxsip/MessageFacts.h"

#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "sipobject/messages/KxSipStartLine.h"
#include "tools/kxsip/Printable.h"

namespace {

/** Returns the URI of a From or To, empty if the header is nil. */
template <class H>
std::string uriOf(const KxHandle<H>& header) {
    return header.isNil() ? "" : std::string(header->getURL().view());
}

} // namespace

MessageFacts::MessageFacts(const ReadMessage& read) {
    if (read.isRefused()) {
        takeStartLine(read.text);
    } else if (const auto* const request = read.message->as<KxSipRequest>()) {
        method = request->getMethod();
    } else if (const auto* const response = read.message->as<KxSipResponse>()) {
        code = static_cast<int>(response->getStatusCode());
        reason = response->getReasonPhrase().view();
    }
    if (!read.object().isNil()) {
        takeHeaders(*read.object());
    }
}

std::string MessageFacts::label() const {
    return printable(isResponse() ? std::to_string(code) + " " + reason : method);
}

void MessageFacts::takeStartLine(std::string_view text) {
    const KxSipStartLine line = KxSipStartLine::sRead(text);
    method = line.method;
    code = static_cast<int>(line.code);
    reason = line.reason;
}

void MessageFacts::takeHeaders(const KxSipMessage& message) {
    if (const auto cseq = message.getCSeqHeader(); isResponse() && !cseq.isNil()) {
        method = cseq->getMethod().view();
    }
    if (const auto header = message.getCallIdHeader(); !header.isNil()) {
        callId = header->getCallId().view();
    }
    from = uriOf(message.getFromHeader());
    to = uriOf(message.getToHeader());
    hasSdp = message.getBodyType().equalsNoCase("application/sdp");
}
