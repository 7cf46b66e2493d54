#include "sipobject/messages/KxSipRequiredHeaders.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/messages/KxSipHeaderSlots.h"

namespace {

struct Required {
    HeaderID id;
    const char* name;
};
/** In the order of the checks. */
constexpr Required kRequired[] = {
    {KxHeaderIDs::kVia, "Via"},
    {KxHeaderIDs::kFrom, "From"},
    {KxHeaderIDs::kTo, "To"},
    {KxHeaderIDs::kCSeq, "CSeq"},
    {KxHeaderIDs::kContentLength, "Content-Length"},
    {KxHeaderIDs::kCallId, "Call-ID"},
};

bool hasUntypedBody(const KxSipHeaderSlots& headers) {
    const auto* const length = headers.findTyped<KxSipContentLengthHeader>();
    return length != nullptr && length->getContentLength() != 0 && headers.first(KxHeaderIDs::kContentType).isNil();
}

bool isOther(const KxString& method, const KxString& expected) {
    return !method.sharesWith(expected) && !method.equalsNoCase(expected);
}

} // namespace

std::string KxSipRequiredHeaders::sFault(const KxSipHeaderSlots& headers, const KxString* method) {
    for (const auto& [id, name] : kRequired) {
        const KxSipHeader* const first = headers.first(id).get();
        if (first == nullptr) {
            return std::string("missing ").append(name).append(" header");
        }
        if (id == KxHeaderIDs::kCSeq && method != nullptr) {
            const auto* const cseq = headers.findTyped<KxSipCSeqHeader>();
            if (cseq != nullptr && isOther(cseq->getMethod(), *method)) {
                return std::string("invalid method in CSeq header (got=\"")
                    .append(cseq->getMethod().view())
                    .append("\" expected=\"")
                    .append(method->view())
                    .append("\"");
            }
        }
        if (id != KxHeaderIDs::kVia && !first->getNext().isNil()) {
            return std::string("multiple ").append(name).append(" headers detected");
        }
        if (id == KxHeaderIDs::kContentLength && hasUntypedBody(headers)) {
            return "SIP Message has body but no Content-Type header";
        }
    }
    if (KxSipGrammar::sChecksRepetition()) {
        const KxSipHeader* const hops = headers.first(KxHeaderIDs::kMaxForwards).get();
        if (hops != nullptr && !hops->getNext().isNil()) {
            return "multiple Max-Forwards headers detected";
        }
    }
    return {};
}
