#include "tools/kxsip/MessageFacts.h"

#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tools/kxsip/HeaderScan.h"
#include "tools/kxsip/Printable.h"
#include "util/KxAscii.h"

namespace {

/** Returns the URI of a From or To, empty if the header is nil. */
template <class H>
std::string uriOf(const KxHandle<H>& header) {
    return header.isNil() ? "" : std::string(header->getURL().view());
}

std::string_view afterBlank(std::string_view text) {
    const std::size_t blank = text.find(' ');
    return blank == std::string_view::npos ? std::string_view() : KxAscii::trim(text.substr(blank));
}

} // namespace

MessageFacts::MessageFacts(const ReadMessage& read) {
    if (read.isRefused()) {
        takeText(read);
    } else {
        takeObject(*read.message);
    }
}

std::string MessageFacts::label() const {
    return printable(isResponse() ? std::to_string(code) + " " + reason : method);
}

void MessageFacts::takeText(const ReadMessage& read) {
    takeStartLine(HeaderScan::firstLine(read.text));
    if (isResponse()) {
        method = afterBlank(HeaderScan::valueOf(read.text, "CSeq", 0).value_or(""));
    }
    callId = HeaderScan::valueOf(read.text, "Call-ID", 'i').value_or("");
}

void MessageFacts::takeStartLine(std::string_view line) {
    if (line.starts_with("SIP/")) {
        const std::string_view rest = afterBlank(line);
        code = static_cast<int>(KxAscii::toNumber(rest.substr(0, 3)));
        reason = afterBlank(rest);
    } else {
        method = line.substr(0, line.find(' '));
    }
}

void MessageFacts::takeObject(const KxSipMessage& message) {
    if (const auto* const request = dynamic_cast<const KxSipRequest*>(&message)) {
        method = request->getMethod();
    } else if (const auto* const response = dynamic_cast<const KxSipResponse*>(&message)) {
        code = static_cast<int>(response->getStatusCode());
        reason = response->getReasonPhrase().view();
        if (const auto cseq = message.getCSeqHeader(); !cseq.isNil()) {
            method = cseq->getMethod().view();
        }
    }
    if (const auto header = message.getCallIdHeader(); !header.isNil()) {
        callId = header->getCallId().view();
    }
    from = uriOf(message.getFromHeader());
    to = uriOf(message.getToHeader());
}
