#include "sipobject/messages/KxSipMessage.h"

#include "core/AceCleanupLogger.h"
#include "core/Assertion.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipContentEncodingHeader.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipSessionExpiresHeader.h"
#include "sipobject/headers/KxSipSubjectHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "util/KxOutputStream.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <typeinfo>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipMessage"};
constinit Oskan::MemAccount s_bodyAccount{"KxSipMessageBody"};

} // namespace

constinit Oskan::MemAccount KxSipMessage::s_account{"KxSipMessage"};

KxSipMessage::KxSipMessage() : m_mutex(KxMutex::sAllocate()) {}

KxSipMessage::KxSipMessage(const KxSipMessage& other) : KxSipMessage(other, Lock(other)) {}

KxSipMessage::KxSipMessage(const KxSipMessage& other, const Lock&) : KxSipMessage() {
    m_headers.copyFrom(other.m_headers);
    if (other.m_body != nullptr) {
        m_body = bodyOf(other.m_body.get(), other.m_bodyStored);
        m_bodyStored = other.m_bodyStored;
    }
    m_versionHigh = other.m_versionHigh;
    m_versionLow = other.m_versionLow;
    m_connectionAddress = other.m_connectionAddress;
    m_connectionPort = other.m_connectionPort;
    m_localAddress = other.m_localAddress;
    m_localPort = other.m_localPort;
    m_connectionTransport = other.m_connectionTransport;
}

KxSipMessage::~KxSipMessage() {
    KxMutex::sRecycle(m_mutex);
}

bool KxSipMessage::isValid() const {
    return m_status == KX_STATUS_VALID;
}

void KxSipMessage::setVersion(unsigned high, unsigned low) {
    m_versionHigh = static_cast<std::uint8_t>(high);
    m_versionLow = static_cast<std::uint8_t>(low);
}

// ---- headers ----

template <class H>
KxHandle<H> KxSipMessage::typed() const {
    KxSipHeader* const header = m_headers.first(H::kHeaderID).get();
    return KxHandle<H>(header != nullptr && typeid(*header) == typeid(H) ? static_cast<H*>(header) : nullptr);
}

KxHandle<KxSipViaHeader> KxSipMessage::getViaHeader() const {
    return typed<KxSipViaHeader>();
}

KxHandle<KxSipFromHeader> KxSipMessage::getFromHeader() const {
    return typed<KxSipFromHeader>();
}

KxHandle<KxSipToHeader> KxSipMessage::getToHeader() const {
    return typed<KxSipToHeader>();
}

KxHandle<KxSipCSeqHeader> KxSipMessage::getCSeqHeader() const {
    return typed<KxSipCSeqHeader>();
}

KxHandle<KxSipCallIdHeader> KxSipMessage::getCallIdHeader() const {
    return typed<KxSipCallIdHeader>();
}

KxHandle<KxSipContentLengthHeader> KxSipMessage::getContentLengthHeader() const {
    return typed<KxSipContentLengthHeader>();
}

KxHandle<KxSipContactHeader> KxSipMessage::getContactHeader() const {
    return typed<KxSipContactHeader>();
}

KxHandle<KxSipContentEncodingHeader> KxSipMessage::getContentEncodingHeader() const {
    return typed<KxSipContentEncodingHeader>();
}

KxHandle<KxSipContentTypeHeader> KxSipMessage::getContentTypeHeader() const {
    return typed<KxSipContentTypeHeader>();
}

KxHandle<KxSipSessionExpiresHeader> KxSipMessage::getSessionExpiresHeader() const {
    return typed<KxSipSessionExpiresHeader>();
}

KxHandle<KxSipSubjectHeader> KxSipMessage::getSubjectHeader() const {
    return typed<KxSipSubjectHeader>();
}

KxHandle<KxSipSupportedHeader> KxSipMessage::getSupportedHeader() const {
    return typed<KxSipSupportedHeader>();
}

KxHandle<KxSipHeader> KxSipMessage::findHeader(std::string_view name) const {
    const HeaderID id = mTokenToID(name);
    return id == KxHeaderIDs::kUnknown ? m_headers.findUnknown(name) : m_headers.first(id);
}

KxHandle<KxSipHeader> KxSipMessage::getHeader(std::string_view name) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::getHeader");
    const Lock lock(*this);
    return findHeader(name);
}

std::vector<HeaderID> KxSipMessage::getHeaderOrder() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::getHeaderOrder");
    const Lock lock(*this);
    std::vector<HeaderID> order;
    for (HeaderID id = m_headers.firstKind(); id != KxSipHeaderSlots::kEnd; id = m_headers.nextKind(id)) {
        order.push_back(id);
    }
    return order;
}

template <class H>
bool KxSipMessage::listsTag(std::string_view optionTag) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::getHeader");
    const Lock lock(*this);
    const KxHandle<KxSipHeader> first = findHeader(H::sToken);
    for (const KxSipHeader* value = first.get(); value != nullptr; value = value->getNext().get()) {
        if (typeid(*value) == typeid(H) && static_cast<const H*>(value)->getOptionTag() == optionTag) {
            return true;
        }
    }
    return false;
}

bool KxSipMessage::isSupported(std::string_view optionTag) const {
    return listsTag<KxSipSupportedHeader>(optionTag);
}

bool KxSipMessage::isRequired(std::string_view optionTag) const {
    return listsTag<KxSipRequireHeader>(optionTag);
}

[[gnu::cold]] void KxSipMessage::noteTwice(const KxSipHeader& header, const char* operation) {
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug,
                     std::string(operation).append(" : adding a header twice : ").append(header.getToken().view()));
    }
}

/** Returns a copy of a header that is part of a message, since it stays there. Returns the header itself if it is part
    of no message, or if it is already the first in its slot here; nothing is added then. */
KxHandle<KxSipHeader> KxSipMessage::ownOrCopy(const KxHandle<KxSipHeader>& header) const {
    if (!header->isInMessage() || getHeaderByID(header->getHeaderID()) == header) {
        return header;
    }
    return KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(header->clone()));
}

void KxSipMessage::addHeader(const KxHandle<KxSipHeader>& header, bool first) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::addHeader");
    if (!header.isNil()) {
        const Lock lock(*this);
        insert(ownOrCopy(header), first, "KxSipMessage::addHeader");
    }
}

void KxSipMessage::asynchAddHeader(KxHandle<KxSipHeader>&& header, bool first) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::asynchAddHeader");
    if (!header.isNil()) {
        insert(header->isInMessage() ? ownOrCopy(header) : std::move(header), first, "KxSipMessage::asynchAddHeader");
    }
}

void KxSipMessage::asynchAddHeader(const KxHandle<KxSipHeader>& header, bool first) {
    asynchAddHeader(KxHandle<KxSipHeader>(header), first);
}

void KxSipMessage::addSingleHeader(const KxHandle<KxSipHeader>& header, bool first) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::addSingleHeader");
    if (header.isNil()) {
        return;
    }
    const Lock lock(*this);
    if (header->isInMessage() && findHeader(header->getToken()) == header) {
        noteTwice(*header, "KxSipMessage::addSingleHeader");
    } else { // copying a header does not copy its chain
        insert(KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(header->clone())), first,
               "KxSipMessage::addSingleHeader");
    }
}

void KxSipMessage::addHeaderByID(const KxHandle<KxSipHeader>& header) {
    m_headers.add(ownOrCopy(header), false);
}

void KxSipMessage::addCopyOf(const KxSipMessage& other, HeaderID id) {
    const KxHandle<KxSipHeader>& first = other.m_headers.first(id);
    if (!first.isNil()) {
        asynchAddHeader(KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(first->clone())), false);
    }
}

void KxSipMessage::addCopiesOf(const KxSipMessage& other, HeaderID id) {
    asynchAddHeader(other.m_headers.copyOf(id), false);
}

void KxSipMessage::copyConnection(const KxSipMessage& other) {
    if (other.m_connectionTransport == KxSocketImpl::TCP || other.m_connectionTransport == KxSocketImpl::TLS) {
        m_connectionAddress = other.m_connectionAddress;
        m_connectionPort = other.m_connectionPort;
        m_connectionTransport = other.m_connectionTransport;
    }
}

bool KxSipMessage::removeHeader(std::string_view name) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::removeHeader");
    const Lock lock(*this);
    const HeaderID id = mTokenToID(name);
    return id == KxHeaderIDs::kUnknown ? m_headers.removeUnknown(name) : m_headers.removeFirst(id);
}

void KxSipMessage::removeAllLike(const KxSipHeader& header) {
    const HeaderID id = header.getHeaderID();
    const Lock lock(*this);
    while (id == KxHeaderIDs::kUnknown ? m_headers.removeUnknown(header.getToken()) : m_headers.removeFirst(id)) {
    }
}

// ---- body ----

void KxSipMessage::FreeBody::operator()(char* bytes) const noexcept {
    s_bodyAccount.deallocate(bytes);
}

KxSipMessage::BodyBytes KxSipMessage::bodyOf(const void* bytes, std::size_t length) {
    try {
        BodyBytes body(static_cast<char*>(s_bodyAccount.allocate(length + 1)));
        std::memcpy(body.get(), bytes, length);
        body.get()[length] = '\0';
        return body;
    } catch (const std::bad_alloc&) {
        KxSipParseError::sThrow("failed to allocate a SIP message body of size " + std::to_string(length));
    }
}

/** Allocates memory first, so that a failed allocation changes nothing. */
void KxSipMessage::setBody(const void* body, const char* contentType, std::uint32_t length) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::setBody");
    const Lock lock(*this);
    const KxHandle<KxSipContentLengthHeader> contentLength = getContentLengthHeader();
    KxHandle<KxSipHeader> freshLength;
    KxHandle<KxSipHeader> freshType;
    BodyBytes fresh;
    if (contentLength.isNil()) {
        freshLength = KxMake<KxSipContentLengthHeader>(length);
    }
    if (length != 0 && body != nullptr && contentType != nullptr) {
        fresh = bodyOf(body, length);
        const KxHandle<KxSipContentTypeHeader> type = getContentTypeHeader();
        if (type.isNil()) {
            freshType = KxMake<KxSipContentTypeHeader>(contentType);
        } else {
            type->setMediaType(contentType);
        }
    }
    if (contentLength.isNil()) {
        insert(std::move(freshLength), false, "KxSipMessage::setBody");
    } else {
        contentLength->setContentLength(length);
    }
    if (length == 0) {
        return;
    }
    if (body == nullptr) {
        KxSipParseError::sThrow("Can't build SIP request with NULL body pointer");
    }
    if (contentType == nullptr) {
        KxSipParseError::sThrow("Can't build SIP request(with body) with no content-type");
    }
    m_body = std::move(fresh);
    m_bodyStored = length;
    if (!freshType.isNil()) {
        insert(std::move(freshType), false, "KxSipMessage::setBody");
    }
}

void KxSipMessage::setBody(const char* body, const char* contentType) {
    setBody(body, contentType, body == nullptr ? 0 : static_cast<std::uint32_t>(std::strlen(body)));
}

void KxSipMessage::setBodyOrNone(const void* body, const char* contentType, std::uint32_t length) {
    const KxHandle<KxSipContentLengthHeader> present = getContentLengthHeader();
    if (length != 0) {
        setBody(body, contentType, length);
    } else if (present.isNil()) {
        asynchAddHeader(KxMake<KxSipContentLengthHeader>(0U), false);
    } else { // from the Request-URI, which may have brought a body too
        present->setContentLength(static_cast<std::uint32_t>(m_bodyStored));
    }
}

std::uint32_t KxSipMessage::getBodyLength() const {
    const KxHandle<KxSipContentLengthHeader> header = getContentLengthHeader();
    return header.isNil() ? 0 : header->getContentLength();
}

KxString KxSipMessage::getBodyType() const {
    const KxHandle<KxSipContentTypeHeader> header = getContentTypeHeader();
    return header.isNil() ? KxString("") : header->getMediaType();
}

// ---- writing ----

void KxSipMessage::serialize(KxOutputStream& out) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::serialize");
    const Lock lock(*this);
    serializeStartLine(out);
    serializeHeaders(out);
    if (hasBody()) {
        serializeBody(out);
    }
    out.flush();
}

void KxSipMessage::serializeHeaders(KxOutputStream& out) const {
    for (HeaderID id = m_headers.firstKind(); id != KxSipHeaderSlots::kEnd; id = m_headers.nextKind(id)) {
        m_headers.first(id)->serializeLines(out);
    }
    out.write(std::string_view("\r\n", 2));
}

void KxSipMessage::serializeBody(KxOutputStream& out) const {
    out.write(std::string_view(m_body.get(), std::min<std::size_t>(getBodyLength(), m_bodyStored)));
}

void KxSipMessage::display(KxOutputStream& out, bool) const {
    serialize(out);
}
