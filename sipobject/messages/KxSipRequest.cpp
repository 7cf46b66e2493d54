#include "sipobject/messages/KxSipRequest.h"

#include "core/AceCleanupLogger.h"
#include "core/DynCastAssert.h"
#include "core/GlobalConfig.h"
#include "core/SipLoggers.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipCSeq.h"
#include "sipobject/KxSipCallid.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipObjectParamDefs.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipAuthorizationHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipMaxForwardsHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipMessageReader.h"
#include "sipobject/messages/KxSipRequestBuilder.h"
#include "sipobject/messages/KxSipRequestLine.h"
#include "sipobject/messages/KxSipResponse.h"
#include "sipobject/messages/KxSipTokenText.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxOutputStream.h"

#include <sstream>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipRequest"};

bool isGiven(const char* text) {
    return text != nullptr && *text != '\0';
}

KxString checkedMethod(const char* method) {
    if (!isGiven(method)) {
        KxException::sThrow("The SIP Method cannot be NULL or EMPTY");
    }
    return KxString(method);
}

void noteMissingMaxForwards(const KxSipRequest& request) {
    const Oskan::Logger& logger = Oskan::Sip::getUAInteropMaxForwardsLogger();
    if (logger.isEnabledFor(Oskan::LogLevel::Info)) {
        std::ostringstream note;
        note << "Received a SIP request with no Max-Forwards header. Set " << logger.getName()
             << " logger to ERROR level to mute this warning. Request:\n"
             << request;
        logger.log(Oskan::LogLevel::Info, note.str());
    }
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
        if (KxSipGrammar::sHasExactStartLines()) {
            m_URI = KxHandle<KxURI>(uri->clone()); // with the headers
        }
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

void KxSipRequest::setURI(const KxHandle<KxURI>& uri) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::setURI");
    KxHandle<KxURI> fresh(uri.isNil() ? nullptr : uri->clone());
    stripBrackets(fresh);
    if (!fresh.isNil() && fresh->isSipURL() && KxSipGrammar::sHasExactStartLines()) {
        static_cast<KxSipURL&>(*fresh).clearHeaders();
    }
    const Lock lock(*this);
    m_URI.swap(fresh);
}

KxHandle<KxSipURL> KxSipRequest::getURL() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::getURL");
    KxURI* const pObject = m_URI.get();
    return KxHandle<KxSipURL>(pObject == nullptr ? nullptr : OSKAN_DYNCAST_ASSERT(KxSipURL, pObject));
}

KxHandle<KxSipNameAddress> KxSipRequest::getNameAddress() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::getNameAddress");
    return KxMake<KxSipNameAddress>(KxString(""), m_URI);
}

/** The Request-URI if it is a SIP URL, else null. */
const KxSipURL* KxSipRequest::sipURL() const {
    return !m_URI.isNil() && m_URI->isSipURL() ? static_cast<const KxSipURL*>(m_URI.get()) : nullptr;
}

KxHandle<KxSipAuthorizationHeader> KxSipRequest::getAuthorizationHeader() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::getAuthorizationHeader");
    const KxHandle<KxSipHeader>& own = firstRead(KxHeaderIDs::kAuthorization);
    return KxHandleCast<KxSipAuthorizationHeader>(own.isNil() ? firstRead(KxHeaderIDs::kProxyAuthorization) : own);
}

const char* KxSipRequest::getRequestURIHost() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::getRequestURIHost");
    return sipURL() == nullptr ? "" : sipURL()->getHost().c_str();
}

std::uint32_t KxSipRequest::getRequestURIPort() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::getRequestURIPort");
    return sipURL() == nullptr ? 0 : sipURL()->getPort();
}

void KxSipRequest::insertViaHeader(const char* host, unsigned port, const char* transport) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::insertViaHeader");
    addHeader(KxMake<KxSipViaHeader>(host, port, transport), true);
}

void KxSipRequest::setSource(const KxInetAddress& address, std::uint32_t port, KxSocketImpl::Transport transport) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::setSource");
    setConnectionAddress(address);
    setConnectionPort(port);
    setConnectionTransport(transport);
    if (const KxHandle<KxSipViaHeader> via = getViaHeader(); !via.isNil()) {
        via->setSource(address.getHostAddress(), port);
    }
}

void KxSipRequest::setPreferredIpAddr(const char* address) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::setPreferredIpAddr");
    KxInetAddress preferred;
    if (preferred.initFromAddress(address)) {
        m_preferredIpAddrText = preferred.getHostAddress();
        m_PreferredIpAddr = preferred;
    }
}

bool KxSipRequest::isRequest() const {
    return true;
}

bool KxSipRequest::useLocalOutboundProxy() const {
    return false;
}

bool KxSipRequest::isValid() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::isValid");
    const KxHandle<KxSipCSeqHeader> cseq = getCSeqHeader();
    return KxSipMessage::isValid() && !cseq.isNil() && cseq->getMethod() == m_Method;
}

bool KxSipRequest::tooManyHops() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::tooManyHops");
    const auto header = KxHandleCast<KxSipMaxForwardsHeader>(getHeaderByID(KxHeaderIDs::kMaxForwards));
    if (header.isNil()) {
        noteMissingMaxForwards(*this);
        return false;
    }
    if (header->getMaxForwards() != 0) {
        return false;
    }
    bool ignore = false;
    if (Oskan::GlobalConfig::getInstance().getBool(Oskan::KxSipObject::kIgnoreMaxForwards, ignore) && ignore) {
        if (s_logger.isEnabled(Oskan::LogLevel::Info)) {
            s_logger.log(Oskan::LogLevel::Info,
                         std::string("Got request with Max-Forwards set to 0: ignoring it since ")
                             .append(Oskan::KxSipObject::kIgnoreMaxForwards)
                             .append(" parameter is set"));
        }
        return false;
    }
    s_logger.log(Oskan::LogLevel::Info, "Got request with Max-Forwards set to 0");
    return true;
}

bool KxSipRequest::rejectedByStack(unsigned& code) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::rejectedByStack");
    constexpr std::size_t kURILimit = 1024;
    code = getStatus();
    if (code == 0 && tooManyHops()) {
        code = 483;
    }
    if (code == 0 && !m_URI.isNil() && m_URI->getString().length() >= kURILimit) {
        code = 414;
    }
    return code != 0;
}

void KxSipRequest::parse(const char* token, KxInputStream& in) {
    m_Method = KxString(token);
    KxSipMessage::parse(token, in);
}

void KxSipRequest::parseStartLine(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipRequest::parseStartLine");
    const KxSipRequestLine line = KxSipRequestLine::sRead(in);
    m_URI = line.uri;
    if (line.fault != nullptr) {
        setStatus(line.status);
        KxSipParseError::sThrow(line.fault);
    }
    setVersion(2, 0);
    stripSipURLHeaders();
    stripBrackets(m_URI);
}

const KxString* KxSipRequest::methodForCSeq() const {
    return &m_Method;
}

void KxSipRequest::serializeStartLine(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipRequest::serializeStartLine");
    if (m_Method.empty() || m_URI.isNil()) {
        return;
    }
    out.writeAll(m_Method, ' ');
    m_URI->serialize(out);
    out.writeAll(std::string_view(" SIP/", 5), getVersionHigh(), '.', getVersionLow(), std::string_view("\r\n", 2));
}

/** Moves the headers after the "?" of a SIP Request-URI to the request, where they replace those of the same kind;
    "body" becomes the body. [RFC 3261 19.1.5] */
void KxSipRequest::stripSipURLHeaders() {
    if (m_URI.isNil() || !m_URI->isSipURL()) {
        return;
    }
    KxSipURL* const url = static_cast<KxSipURL*>(m_URI.get());
    if (!url->hasHeaders()) {
        return;
    }
    const KxHandle<KxParameters> entries = url->getHeaders();
    // No name is twice in the list, so only headers that were here before can have the name of an unknown one. With
    // escapes, two names may be one.
    const bool mayReplaceUnknown = !getHeaderByID(KxHeaderIDs::kUnknown).isNil() || KxSipGrammar::sReadsURLsStrictly();
    for (const KxParameters::Pair& written : *entries) {
        const KxParameters::Pair entry = KxSipURL::sDecoded(written);
        if (entry.name.equalsNoCase("body")) {
            KxByteArrayInputStream body(entry.value.view());
            parseBody(body);
        } else {
            const KxHandle<KxSipHeader> header = headerFrom(entry.name, entry.value);
            if (mayReplaceUnknown || header->getHeaderID() != KxHeaderIDs::kUnknown) {
                removeAllLike(*header);
            }
            addHeader(header, false);
        }
    }
    url->clearHeaders();
}

/** Creates a header with the name and value. A name that would read differently before a colon is refused. */
KxHandle<KxSipHeader> KxSipRequest::headerFrom(const KxString& name, const KxString& value) {
    if (name.view().find(':') != std::string_view::npos || KxAscii::trim(name) != name.view()) {
        KxSipParseError::sThrow("Header token expected");
    }
    if (KxSipGrammar::sReadsURLsStrictly()) { // which decodes here, so that a line end could be in the text
        KxSipText(name).check();
        KxSipText(value).check();
    }
    return KxSipHeader::sConstructFrom(name, std::string(value.view()) + "\r\n");
}

KxString KxSipRequest::clearBrackets(const KxString& text) {
    std::string clear(text.view());
    std::erase_if(clear, [](char c) { return c == '<' || c == '>'; });
    return KxString(clear);
}

void KxSipRequest::stripBrackets(const KxHandle<KxURI>& uri) {
    constexpr std::string_view kBrackets = "<>";
    if (uri.isNil() || uri->isSipURL()) { // a SIP URL was read without them
        return;
    }
    if (uri->getScheme().view().find_first_of(kBrackets) != std::string_view::npos) {
        uri->setScheme(clearBrackets(uri->getScheme()));
    }
    if (uri->getSchemeData().view().find_first_of(kBrackets) != std::string_view::npos) {
        uri->setSchemeData(clearBrackets(uri->getSchemeData()));
    }
}

// ---- by parts ----

KxHandle<KxSipRequest> KxSipRequest::sEmpty(const KxString& method) {
    KxHandle<KxSipRequest> request = KxHandleCast<KxSipRequest>(KxSipMessageReader::sEmpty(method));
    if (request.isNil()) {
        KxSipParseError::sThrow("Not a method of requests");
    }
    return request;
}

KxHandle<KxSipRequest> KxSipRequest::sBuild(KxSipText method, const KxSipRequestParts& parts) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::sBuild");
    const KxString token = KxSipTokenText::sChecked(method, "method");
    KxHandle<KxSipRequest> request = sEmpty(token);
    KxSipRequestBuilder(*request, token).build(parts);
    return request;
}

KxHandle<KxSipRequest> KxSipRequest::sWithin(KxSipDialog& dialog, KxSipText method, const KxSipDialogParts& parts) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::sWithin");
    const KxString token = KxSipTokenText::sChecked(method, "method");
    if (token == "ACK" || token == "CANCEL") {
        KxSipParseError::sThrow("ACK and CANCEL have the CSeq number of their INVITE");
    }
    KxHandle<KxSipRequest> request = sEmpty(token);
    KxSipRequestBuilder(*request, token).buildWithin(dialog, parts);
    return request;
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
