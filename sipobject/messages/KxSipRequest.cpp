#include "sipobject/messages/KxSipRequest.h"

#include "core/AceCleanupLogger.h"
#include "core/DynCastAssert.h"
#include "core/GlobalConfig.h"
#include "core/SipLoggers.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipObjectParamDefs.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/address/KxTelURL.h"
#include "sipobject/headers/KxSipAuthorizationHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipMaxForwardsHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipRequest"};
constexpr KxCharSet kLineFeed("\n");
constexpr std::size_t kVersionLength = 7; // the length of "SIP/2.0"

/** Whether the scheme begins with "sip" but is longer. The parser of SIP URLs would report it as a syntax error. */
bool onlyBeginsLikeSip(std::string_view uri) {
    const std::size_t begin = std::min(uri.find_first_not_of(" <\t"), uri.size());
    const std::string_view scheme = KxAscii::trim(uri.substr(begin, uri.find(':') - begin));
    return uri.find(':') != std::string_view::npos && scheme.size() > 3 &&
           KxAscii::equalsNoCase(scheme.substr(0, 3), KxSipURL::sToken);
}

} // namespace

void KxSipRequest::setURI(const KxHandle<KxURI>& uri) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipRequest::setURI");
    KxHandle<KxURI> fresh(uri.isNil() ? nullptr : uri->clone());
    stripBrackets(fresh);
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
    const KxHandle<KxSipHeader>& own = getHeaderByID(KxHeaderIDs::kAuthorization);
    return KxHandleCast<KxSipAuthorizationHeader>(own.isNil() ? getHeaderByID(KxHeaderIDs::kProxyAuthorization) : own);
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
        noteMissingMaxForwards();
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

void KxSipRequest::noteMissingMaxForwards() const {
    const Oskan::Logger& logger = Oskan::Sip::getUAInteropMaxForwardsLogger();
    if (logger.isEnabledFor(Oskan::LogLevel::Info)) {
        std::ostringstream note;
        note << "Received a SIP request with no Max-Forwards header. Set " << logger.getName()
             << " logger to ERROR level to mute this warning. Request:\n"
             << *this;
        logger.log(Oskan::LogLevel::Info, note.str());
    }
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

void KxSipRequest::refuse(KxStatus status, const char* why) {
    setStatus(status);
    KxSipParseError::sThrow(why);
}

void KxSipRequest::parseStartLine(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipRequest::parseStartLine");
    KxScannedText scanned;
    const std::string_view line = scanned.until(in, kLineFeed);
    if (in.read() < 0) {
        refuse(KX_STATUS_UNUSABLE,
               "Invalid Start-Line for SIP request: reached end of message looking for end-of-line");
    }
    parseRequestLine(line);
}

/** Reads the part between the method and the LF. */
void KxSipRequest::parseRequestLine(std::string_view line) {
    if (line.empty() || line.back() != '\r') {
        refuse(KX_STATUS_UNUSABLE, "Invalid Start-Line for SIP request: no CR before LF");
    }
    line.remove_suffix(1);
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    const bool one = first != std::string_view::npos && first == last;
    const bool two = first == 0 && line.find(' ', 1) == last;
    if (!one && !two) {
        refuse(KX_STATUS_UNUSABLE, "Invalid Start-Line for SIP request: does not contain 1 or 2 spaces");
    }
    if (last == 0) {
        KxSipParseError::sThrow("Invalid Start-Line for SIP request");
    }
    checkVersion(line.substr(last + 1));
    parseRequestURI(line.substr(0, last));
}

void KxSipRequest::checkVersion(std::string_view version) {
    if (version.size() != kVersionLength || version.substr(0, 4) != "SIP/") {
        KxSipParseError::sThrow("Invalid SIP Version");
    }
    if (version.substr(4) != "2.0") {
        refuse(KX_STATUS_VERSION_NOT_SUPPORTED, "Invalid SIP Version");
    }
    setVersion(2, 0);
}

void KxSipRequest::parseRequestURI(std::string_view text) {
    if (onlyBeginsLikeSip(text)) {
        refuse(KX_STATUS_UNSUPPORTED_URI_SCHEME, "Unsupported Uri Scheme");
    }
    KxByteArrayInputStream uri(text);
    m_URI = KxURI::sConstructFrom(uri, true);
    if (m_URI.isNil()) {
        KxSipParseError::sThrow("Invalid SIP URI");
    }
    const KxString& scheme = m_URI->getScheme();
    if (!scheme.equalsNoCase(KxSipURL::sToken) && !scheme.equalsNoCase(KxTelURL::sToken)) {
        refuse(KX_STATUS_UNSUPPORTED_URI_SCHEME, "Unsupported Uri Scheme");
    }
    stripSipURLHeaders();
    stripBrackets(m_URI);
}

void KxSipRequest::checkCSeqMethod() {
    const KxHandle<KxSipCSeqHeader> cseq = getCSeqHeader();
    if (!cseq.isNil() && !cseq->getMethod().equalsNoCase(m_Method)) {
        invalidate(std::string("invalid method in CSeq header (got=\"")
                       .append(cseq->getMethod().view())
                       .append("\" expected=\"")
                       .append(m_Method.view())
                       .append("\""));
    }
}

void KxSipRequest::serializeStartLine(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipRequest::serializeStartLine");
    if (m_Method.empty() || m_URI.isNil()) {
        return;
    }
    out << m_Method << ' ';
    m_URI->serialize(out);
    out << " SIP/" << getVersionHigh() << '.' << getVersionLow() << std::string_view("\r\n", 2);
}

/** Moves the headers after the "?" of a SIP Request-URI to the request, where they replace those of the same kind;
    "body" becomes the body. [RFC 3261 19.1.5] */
void KxSipRequest::stripSipURLHeaders() {
    auto* const url = dynamic_cast<KxSipURL*>(m_URI.get());
    if (url == nullptr || !url->hasHeaders()) {
        return;
    }
    const KxHandle<KxParameters> entries = url->getHeaders();
    for (const KxParameters::Pair& entry : *entries) {
        if (entry.name.equalsNoCase("body")) {
            KxByteArrayInputStream body(entry.value.view());
            parseBody(body);
        } else {
            const KxHandle<KxSipHeader> header = headerFrom(entry.name, entry.value);
            removeAllLike(*header);
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
    KxHandle<KxSipHeader> header = KxSipHeader::sConstruct(name);
    const std::string line = std::string(value.view()) + "\r\n";
    KxByteArrayInputStream in{std::string_view(line)};
    header->parseRest(in);
    return header;
}

KxString KxSipRequest::clearBrackets(const KxString& text) {
    std::string clear(text.view());
    std::erase_if(clear, [](char c) { return c == '<' || c == '>'; });
    return KxString(clear);
}

void KxSipRequest::stripBrackets(const KxHandle<KxURI>& uri) {
    constexpr std::string_view kBrackets = "<>";
    if (uri.isNil()) {
        return;
    }
    if (uri->getScheme().view().find_first_of(kBrackets) != std::string_view::npos) {
        uri->setScheme(clearBrackets(uri->getScheme()));
    }
    if (uri->getSchemeData().view().find_first_of(kBrackets) != std::string_view::npos) {
        uri->setSchemeData(clearBrackets(uri->getSchemeData()));
    }
}
