// Checks on a whole message: whether it has the headers that every message must have, and its transaction key.

#include "core/AceCleanupLogger.h"
#include "core/FastString.h"
#include "core/TraceScope.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipMessage.h"

#include <charconv>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipMessage"};

/** A text built from pieces, without separators. */
class Key {
public:
    void add(std::string_view piece) { m_text.append(piece); }
    void add(std::uint32_t number) {
        char digits[10];
        add(std::string_view(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr));
    }
    void add(const KxSipNameAddress* address) {
        if (address == nullptr || address->getURI().isNil()) {
            return;
        }
        const KxURI& uri = *address->getURI();
        const auto* const url = dynamic_cast<const KxSipURL*>(&uri);
        if (url == nullptr) {
            add(uri.getString().view());
            return;
        }
        add(url->getUser().view());
        add(url->getHost().view());
        add(url->getPort());
    }
    KxString text() const { return KxString(KxStringBuffer::sCreate(m_text.data(), m_text.length(), kRoom)); }

private:
    static constexpr std::size_t kRoom = 96;

    Oskan::FastString<2 * kRoom> m_text;
};

} // namespace

void KxSipMessage::invalidate(std::string_view why) {
    m_status = KX_STATUS_UNUSABLE;
    KxException::sThrow(why);
}

void KxSipMessage::checkHeader(HeaderID id, std::string_view name, bool single) {
    const KxHandle<KxSipHeader>& first = getHeaderByID(id);
    if (first.isNil()) {
        invalidate(std::string("missing ").append(name).append(" header"));
    }
    if (single && !first->getNext().isNil()) {
        invalidate(std::string("multiple ").append(name).append(" headers detected"));
    }
}

void KxSipMessage::checkCSeqMethod() {}

void KxSipMessage::checkValidity() {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::checkValidity");
    checkHeader(KxHeaderIDs::kVia, "Via", false);
    checkHeader(KxHeaderIDs::kFrom, "From", true);
    checkHeader(KxHeaderIDs::kTo, "To", true);
    checkHeader(KxHeaderIDs::kCSeq, "CSeq", false);
    checkCSeqMethod();
    checkHeader(KxHeaderIDs::kCSeq, "CSeq", true);
    checkHeader(KxHeaderIDs::kContentLength, "Content-Length", true);
    if (getBodyLength() != 0 && getHeaderByID(KxHeaderIDs::kContentType).isNil()) {
        invalidate("SIP Message has body but no Content-Type header");
    }
    checkHeader(KxHeaderIDs::kCallId, "Call-ID", true);
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, "KxSipMessage::checkValidity : m_Status=" + std::to_string(m_status));
    }
}

KxString KxSipMessage::createKey() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::createKey");
    if (m_status == KX_STATUS_UNUSABLE) {
        KxException::sThrow("Unable to create transaction key for INVALID SIP Message");
    }
    KxHandle<KxSipToHeader> to;
    KxHandle<KxSipFromHeader> from;
    KxHandle<KxSipCallIdHeader> callId;
    KxHandle<KxSipCSeqHeader> cseq;
    KxHandle<KxSipViaHeader> via;
    {
        const Lock lock(*this);
        to = getToHeader();
        from = getFromHeader();
        callId = getCallIdHeader();
        cseq = getCSeqHeader();
        via = getViaHeader();
    }
    Key key;
    if (!to.isNil()) {
        key.add(to->getNameAddress().get());
    }
    if (!from.isNil()) {
        key.add(from->getNameAddress().get());
        key.add(from->getTag().view());
    }
    if (!via.isNil()) {
        key.add(std::string_view(via->getHost()));
        key.add(via->isPortPresent() ? via->getPort() : 0U);
        key.add(via->getBranch().view());
    }
    if (!callId.isNil()) {
        key.add(callId->getCallId().view());
    }
    if (!cseq.isNil()) {
        key.add(cseq->getSeqNumber());
    }
    return key.text();
}
