// Building a request: from given values, or step by step from another message.

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipCSeq.h"
#include "sipobject/KxSipCallid.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/messages/KxSipResponse.h"

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipRequest"};

bool isGiven(const char* text) {
    return text != nullptr && *text != '\0';
}

} // namespace

KxSipRequest::KxSipRequest() = default;

KxSipRequest::KxSipRequest(const KxSipRequest& other) : KxSipRequest(other, Lock(other)) {}

KxSipRequest::KxSipRequest(const KxSipRequest& other, const Lock& held)
    : KxSipMessage(other, held),
      m_Method(other.m_Method),
      m_URI(other.m_URI.isNil() ? nullptr : other.m_URI->clone()),
      m_PreferredIpAddr(other.m_PreferredIpAddr),
      m_preferredIpAddrText(other.m_preferredIpAddrText) {}

KxSipRequest::KxSipRequest(const KxString& method) : m_Method(method), m_URI(KxMake<KxURI>(nullptr)) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest ctor 1");
    if (method.empty()) {
        KxException::sThrow("KxSipRequest constructor expects a Method Name");
    }
}

KxSipRequest::KxSipRequest(const char* method, const char* from, const char* to, const char* contact,
                           const char* callId, std::uint32_t cseq, const char* contentType, const void* body,
                           std::uint32_t bodyLength)
    : m_Method(checkedMethod(method)) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest ctor 2");
    const auto fromHeader = KxMake<KxSipFromHeader>(from);
    const auto toHeader = KxMake<KxSipToHeader>(to);
    KxHandle<KxSipContactHeader> contactHeader;
    if (isGiven(contact)) {
        contactHeader = KxMake<KxSipContactHeader>(contact);
    }
    build(fromHeader, toHeader, nullptr, contactHeader, {callId, cseq, contentType, body, bodyLength});
}

KxSipRequest::KxSipRequest(const char* method, const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                           const KxHandle<KxSipContactHeader>& contact, const char* callId, std::uint32_t cseq,
                           const char* contentType, const void* body, std::uint32_t bodyLength)
    : m_Method(checkedMethod(method)) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest ctor 3");
    build(from, to, nullptr, contact, {callId, cseq, contentType, body, bodyLength});
}

KxSipRequest::KxSipRequest(const char* method, const KxHandle<KxSipNameAddress>& requestUri,
                           const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                           const KxHandle<KxSipContactHeader>& contact, const char* callId, std::uint32_t cseq,
                           const char* contentType, const void* body, std::uint32_t bodyLength)
    : m_Method(checkedMethod(method)) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest ctor 4");
    const KxHandle<KxURI> uri = requestUri.isNil() ? KxHandle<KxURI>() : requestUri->getURI();
    build(from, to, &uri, contact, {callId, cseq, contentType, body, bodyLength});
}

KxSipRequest::KxSipRequest(const char* method, const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                           const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact,
                           const char* callId, std::uint32_t cseq, const char* contentType, const void* body,
                           std::uint32_t bodyLength)
    : m_Method(checkedMethod(method)) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest ctor 5");
    build(from, to, &requestUri, contact, {callId, cseq, contentType, body, bodyLength});
}

KxString KxSipRequest::checkedMethod(const char* method) {
    if (!isGiven(method)) {
        KxException::sThrow("The SIP Method cannot be NULL or EMPTY");
    }
    return KxString(method);
}

void KxSipRequest::sRefuse(const char* why) {
    KxSipParseError::sThrow(why);
}

/** Adds the headers, in the order in which they are written. If `requestUri` is null, the To URI is used; the headers
    of a given Request-URI become headers of the request. */
void KxSipRequest::build(const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                         const KxHandle<KxURI>* requestUri, const KxHandle<KxSipContactHeader>& contact,
                         const Content& content) {
    asynchAddHeader(from, false);
    asynchAddHeader(to, false);
    const KxHandle<KxURI> toUri =
        to.isNil() || to->getNameAddress().isNil() ? KxHandle<KxURI>() : to->getNameAddress()->getURI();
    const KxHandle<KxURI>& uri = requestUri == nullptr ? toUri : *requestUri;
    required(uri, "Can't build SIP request without Request-URI");
    setURI(uri);
    if (requestUri != nullptr) {
        stripSipURLHeaders();
    }
    asynchAddHeader(contact, false);
    const KxString callId(isGiven(content.callId) ? content.callId : KxSipCallid().getValue());
    asynchAddHeader(KxMake<KxSipCallIdHeader>(callId), false);
    const std::uint32_t number = content.cseq == 0 ? static_cast<std::uint32_t>(KxSipCSeq()) : content.cseq;
    asynchAddHeader(KxMake<KxSipCSeqHeader>(number, m_Method), false);
    setBodyOrNone(content.body, content.contentType, content.bodyLength);
    OSKAN_ASSERT(!m_Method.empty());
    OSKAN_ASSERT(!m_URI.isNil());
}

// ---- from another message ----

void KxSipRequest::addPartiesOf(const KxSipMessage& parent) {
    required(parent.getFromHeader(), "Can't build SIP request without From header");
    required(parent.getToHeader(), "Can't build SIP request without To header");
    addCopyOf(parent, KxHeaderIDs::kFrom);
    addCopyOf(parent, KxHeaderIDs::kTo);
}

void KxSipRequest::addSequenceOf(const KxSipMessage& parent, std::uint32_t step) {
    const KxString callId =
        required(parent.getCallIdHeader(), "Can't build SIP request without Call-ID header").getCallId();
    const std::uint32_t number =
        required(parent.getCSeqHeader(), "Can't build SIP request without CSeq header").getSeqNumber();
    asynchAddHeader(KxMake<KxSipCallIdHeader>(callId), false);
    asynchAddHeader(KxMake<KxSipCSeqHeader>(number + step, m_Method), false);
}

void KxSipRequest::setTarget(const KxHandle<KxSipNameAddress>& address, const char* otherwise) {
    const KxHandle<KxSipURL> url = address.isNil() ? KxHandle<KxSipURL>() : address->getURL();
    required(url, otherwise);
    setURI(url);
}

void KxSipRequest::setTargetOf(const KxSipMessage& response, bool contactCounts) {
    const KxHandle<KxSipContactHeader> contact = response.getContactHeader();
    if (contactCounts && !contact.isNil()) {
        setTarget(contact->getNameAddress(), "Can't build SIP request: no SIP URL in Contact header");
    } else {
        setTarget(required(response.getToHeader(), "Can't build SIP request without To header").getNameAddress(),
                  "Can't build SIP request: no SIP URL in To header");
    }
}

void KxSipRequest::acknowledge(const KxHandle<KxSipResponse>& response, std::uint32_t step, const char* onlyInvite) {
    const KxSipResponse& parent = required(response, "Handle to response is NIL");
    const KxHandle<KxSipCSeqHeader> cseq = parent.getCSeqHeader();
    if (required(cseq, "Can't build SIP request without CSeq header").getMethod() != "INVITE") {
        KxSipParseError::sThrow(onlyInvite);
    }
    addPartiesOf(parent);
    setTargetOf(parent, parent.getStatusCode() / 100 == 2);
    addSequenceOf(parent, step);
}
