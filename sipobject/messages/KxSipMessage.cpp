#include "sipobject/messages/KxSipMessage.h"

#include "core/AceCleanupLogger.h"
#include "core/Logger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipGrammar.h"
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
#include "sipobject/messages/KxSipMessageReader.h"
#include "sipobject/messages/KxSipRequiredHeaders.h"
#include "sipobject/messages/KxSipTransactionKey.h"
#include "util/KxByteArrayOutputStream.h"

#include <cstring>
#include <limits>
#include <sstream>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipMessage"};
constexpr int kLogLine = 179; // log configurations identify the events of logMessage by this line number

[[gnu::cold]] void logAddedTwice(const KxSipHeader& header, const char* operation) {
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug,
                     std::string(operation).append(" : adding a header twice : ").append(header.getToken().view()));
    }
}

} // namespace

constinit Oskan::MemAccount KxSipMessage::s_account{"KxSipMessage"};

KxSipMessage::KxSipMessage() : m_mutex(KxMutex::sAllocate()) {}

KxSipMessage::KxSipMessage(const KxSipMessage& other) : KxSipMessage(other, Lock(other)) {}

KxSipMessage::KxSipMessage(const KxSipMessage& other, const Lock&) : KxSipMessage() {
    m_headers.copyFrom(other.m_headers);
    m_body = other.m_body.copy();
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

// ---- reading and checking ----

void KxSipMessage::sAddConstructor(const KxString& token, Creator creator) {
    KxSipMessageReader::sAddConstructor(token, creator);
}

KxHandle<KxSipMessage> KxSipMessage::sConstructFrom(KxInputStream& in) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::sConstructFrom");
    return KxSipMessageReader::sConstructFrom(in);
}

void KxSipMessage::parse(const char*, KxInputStream& in) {
    KxSipMessageReader(*this).read(in);
}

void KxSipMessage::parseHeaders(KxInputStream& in) {
    KxSipMessageReader(*this).readHeaders(in);
}

void KxSipMessage::parseBody(KxInputStream& in) {
    KxSipMessageReader(*this).readBody(in);
}

void KxSipMessage::checkValidity() {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::checkValidity");
    const std::string fault = KxSipRequiredHeaders::sFault(m_headers, methodForCSeq());
    if (!fault.empty()) {
        m_status = KX_STATUS_UNUSABLE;
        KxException::sThrow(fault);
    }
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, "KxSipMessage::checkValidity : m_Status=" + std::to_string(m_status));
    }
}

KxString KxSipMessage::createKey() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::createKey");
    if (m_status == KX_STATUS_UNUSABLE) {
        KxException::sThrow("Unable to create transaction key for INVALID SIP Message");
    }
    const auto takeHeaders = [this] {
        const Lock lock(*this);
        return KxSipTransactionKey(m_headers);
    };
    return takeHeaders().text();
}

// ---- headers ----

KxHandle<KxSipViaHeader> KxSipMessage::getViaHeader() const {
    return m_headers.typed<KxSipViaHeader>();
}

KxHandle<KxSipFromHeader> KxSipMessage::getFromHeader() const {
    return m_headers.typed<KxSipFromHeader>();
}

KxHandle<KxSipToHeader> KxSipMessage::getToHeader() const {
    return m_headers.typed<KxSipToHeader>();
}

KxHandle<KxSipCSeqHeader> KxSipMessage::getCSeqHeader() const {
    return m_headers.typed<KxSipCSeqHeader>();
}

KxHandle<KxSipCallIdHeader> KxSipMessage::getCallIdHeader() const {
    return m_headers.typed<KxSipCallIdHeader>();
}

KxHandle<KxSipContentLengthHeader> KxSipMessage::getContentLengthHeader() const {
    return m_headers.typed<KxSipContentLengthHeader>();
}

KxHandle<KxSipContactHeader> KxSipMessage::getContactHeader() const {
    return m_headers.typed<KxSipContactHeader>();
}

KxHandle<KxSipContentEncodingHeader> KxSipMessage::getContentEncodingHeader() const {
    return m_headers.typed<KxSipContentEncodingHeader>();
}

KxHandle<KxSipContentTypeHeader> KxSipMessage::getContentTypeHeader() const {
    return m_headers.typed<KxSipContentTypeHeader>();
}

KxHandle<KxSipSessionExpiresHeader> KxSipMessage::getSessionExpiresHeader() const {
    return m_headers.typed<KxSipSessionExpiresHeader>();
}

KxHandle<KxSipSubjectHeader> KxSipMessage::getSubjectHeader() const {
    return m_headers.typed<KxSipSubjectHeader>();
}

KxHandle<KxSipSupportedHeader> KxSipMessage::getSupportedHeader() const {
    return m_headers.typed<KxSipSupportedHeader>();
}

HeaderID KxSipMessage::mTokenToID(std::string_view name) const {
    return m_headers.findKind(name);
}

KxHandle<KxSipHeader> KxSipMessage::getHeader(std::string_view name) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::getHeader");
    const Lock lock(*this);
    return m_headers.find(name);
}

std::vector<HeaderID> KxSipMessage::getHeaderOrder() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::getHeaderOrder");
    const Lock lock(*this);
    std::vector<HeaderID> order;
    m_headers.findInOrder([&order](HeaderID id, const KxSipHeader&) { return order.push_back(id), false; });
    return order;
}

KxSipHeaderSlots::Named KxSipMessage::findNamed(std::string_view name) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::valuesNamed");
    const Lock lock(*this);
    return m_headers.named(name);
}

KxSipHeader* KxSipMessage::nextNamed(const KxSipHeader& header) const {
    const Lock lock(*this);
    return m_headers.nextLike(header);
}

std::size_t KxSipMessage::removeAllNamed(std::string_view name) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::removeAllNamed");
    const Lock lock(*this);
    return m_headers.removeNamed(name);
}

template <class H>
bool KxSipMessage::listsTag(std::string_view optionTag) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::getHeader");
    if (KxSipGrammar::sFindsHeadersByKind()) {
        return lists<H>(optionTag);
    }
    const Lock lock(*this);
    for (const KxSipHeader* value = m_headers.find(H::sToken).get(); value != nullptr; value = value->getNext().get()) {
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

void KxSipMessage::addHeader(const KxHandle<KxSipHeader>& header, bool first) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::addHeader");
    if (header.isNil()) {
        return;
    }
    const Lock lock(*this);
    if (!m_headers.add(KxHandle<KxSipHeader>(header), first)) {
        logAddedTwice(*header, "KxSipMessage::addHeader");
    }
}

void KxSipMessage::addSingleHeader(const KxHandle<KxSipHeader>& header, bool first) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::addSingleHeader");
    if (header.isNil()) {
        return;
    }
    const Lock lock(*this);
    if (!m_headers.addSingle(*header, first)) {
        logAddedTwice(*header, "KxSipMessage::addSingleHeader");
    }
}

void KxSipMessage::asynchAddHeader(KxHandle<KxSipHeader> header, bool first) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::asynchAddHeader");
    if (header.isNil()) {
        return;
    }
    const KxSipHeader& value = *header; // if it is not added, it is alive in the message
    if (!m_headers.add(std::move(header), first)) {
        logAddedTwice(value, "KxSipMessage::asynchAddHeader");
    }
}

void KxSipMessage::addHeaderByID(const KxHandle<KxSipHeader>& header) {
    m_headers.add(KxHandle<KxSipHeader>(header), false);
}

/** As asynchAddHeader, for copies that are already marked as part of this message. */
[[gnu::always_inline]] inline void KxSipMessage::adopt(KxHandle<KxSipHeader>&& copies) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::asynchAddHeader");
    if (!copies.isNil()) {
        m_headers.addRead(std::move(copies));
    }
}

void KxSipMessage::addCopyOf(const KxSipMessage& other, HeaderID id) {
    KxHandle<KxSipHeader> copy = other.m_headers.copyOfFirst(id);
    if (!copy.isNil()) {
        adopt(std::move(copy));
    }
}

void KxSipMessage::addCopiesOf(const KxSipMessage& other, HeaderID id) {
    adopt(other.m_headers.copyOf(id));
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
    return m_headers.remove(name);
}

std::size_t KxSipMessage::removeByID(HeaderID id, std::size_t atMost) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::removeHeader");
    const Lock lock(*this);
    std::size_t removed = 0;
    while (removed != atMost && m_headers.removeFirst(id)) {
        ++removed;
    }
    return removed;
}

void KxSipMessage::replaceByID(KxHandle<KxSipHeader> header) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::replaceHeader");
    if (!header.isNil()) {
        const Lock lock(*this);
        m_headers.replace(std::move(header));
    }
}

void KxSipMessage::removeAllLike(const KxSipHeader& header) {
    const Lock lock(*this);
    m_headers.removeAllLike(header);
}

// ---- body ----

void KxSipMessage::setBody(const void* body, const char* contentType, std::uint32_t length) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::setBody");
    const Lock lock(*this);
    m_body.set(m_headers, body, contentType, length);
}

void KxSipMessage::setBody(const char* body, const char* contentType) {
    setBody(body, contentType, body == nullptr ? 0 : static_cast<std::uint32_t>(std::strlen(body)));
}

void KxSipMessage::setBody(std::string_view body, KxSipText contentType) {
    const KxString type = contentType.neededIf(!body.empty(), "Content-Type");
    if (body.empty()) {
        const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::setBody");
        const Lock lock(*this);
        m_body.clear(m_headers);
        return;
    }
    if (body.size() > std::numeric_limits<std::uint32_t>::max()) {
        KxSipParseError::sThrow("failed to allocate a SIP message body of size " + std::to_string(body.size()));
    }
    setBody(body.data(), type.c_str(), static_cast<std::uint32_t>(body.size()));
}

void KxSipMessage::setBodyOrNone(const void* body, const char* contentType, std::uint32_t length) {
    const KxHandle<KxSipContentLengthHeader> present = getContentLengthHeader();
    if (length != 0) {
        setBody(body, contentType, length);
    } else if (present.isNil()) {
        asynchAddHeader(KxMake<KxSipContentLengthHeader>(0U), false);
    } else { // from the Request-URI, which may have brought a body too
        present->setContentLength(static_cast<std::uint32_t>(m_body.length()));
    }
}

std::uint32_t KxSipMessage::getBodyLength() const {
    const auto* const header = m_headers.findTyped<KxSipContentLengthHeader>();
    return header == nullptr ? 0 : header->getContentLength();
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
    m_headers.serializeHeaders(out);
    if (hasBody()) {
        m_body.serializeBody(out, getBodyLength());
    }
    out.flush();
}

std::string KxSipMessage::getText() const {
    KxByteArrayOutputStream out;
    serialize(out);
    return std::string(out.view());
}

void KxSipMessage::display(KxOutputStream& out, bool) const {
    serialize(out);
}

void KxSipMessage::formatMessage(std::ostream& out, bool received, unsigned* port, KxInetAddress* address,
                                 Oskan::LogLevel) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::formatMessage");
    KxSipMessageFormat::sWrite(out, *this, received, port, address);
}

void KxSipMessage::logMessage(Oskan::Logger& logger, bool received, unsigned* port, KxInetAddress* address,
                              Oskan::LogLevel level) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::logMessage");
    if (logger.isEnabledFor(level)) {
        std::ostringstream text;
        formatMessage(text, received, port, address, level);
        logger.log(level, text.str(), "KxSipMessage", kLogLine);
    }
}
