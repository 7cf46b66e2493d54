#include "tools/kxsip/MessageFacts.h"

#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "sipobject/messages/KxSipStartLine.h"
#include "tools/kxsip/Printable.h"
#include "util/KxAscii.h"

#include <algorithm>

namespace {

/** Returns the value of the first header line with one of the two names, without its continuation lines. */
std::string_view valueOf(std::string_view message, std::string_view name, std::string_view compact) {
    while (!message.empty() && message.front() != '\r' && message.front() != '\n') {
        const std::string_view line = message.substr(0, message.find('\n'));
        const std::size_t colon = std::min(line.find(':'), line.size());
        const std::string_view word = KxAscii::trimEnd(line.substr(0, colon));
        if (KxAscii::equalsNoCase(word, name) || KxAscii::equalsNoCase(word, compact)) {
            return KxAscii::trim(line.substr(std::min(colon + 1, line.size())));
        }
        message.remove_prefix(std::min(line.size() + 1, message.size()));
    }
    return {};
}

/** Returns the URI of the text of a From or To: what is in angle brackets after a quoted name, else all before ";". */
std::string_view uriIn(std::string_view value) {
    std::size_t begin = 0;
    if (value.starts_with('"')) {
        for (begin = 1; begin < value.size() && value[begin] != '"'; ++begin) {
            begin += value[begin] == '\\' ? 1 : 0;
        }
    }
    begin = value.find('<', begin);
    return begin == std::string_view::npos ? value.substr(0, value.find(';'))
                                           : value.substr(begin + 1, value.find('>', begin) - begin - 1);
}

/** Returns the URI of a From or To. The text of the line is right where the library does not read it: a line that was
    dropped, and in the classic grammar an IPv6 address. */
template <class H>
std::string uriOf(const KxHandle<H>& header, std::string_view value) {
    const std::string_view text = uriIn(value);
    const bool isText = header.isNil() || text.find('[') != std::string_view::npos;
    return std::string(isText ? text : header->getURL().view());
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
        takeHeaders(*read.object(), read.text);
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

void MessageFacts::takeHeaders(const KxSipMessage& message, std::string_view text) {
    if (const auto cseq = message.getCSeqHeader(); isResponse() && !cseq.isNil()) {
        method = cseq->getMethod().view();
    }
    if (const auto header = message.getCallIdHeader(); !header.isNil()) {
        callId = header->getCallId().view();
    }
    from = uriOf(message.getFromHeader(), valueOf(text, "From", "f"));
    to = uriOf(message.getToHeader(), valueOf(text, "To", "t"));
    hasSdp = message.getBodyType().equalsNoCase("application/sdp");
}
