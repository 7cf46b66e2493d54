#include "sipobject/messages/KxSipReading.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipParseKeepAliveException.h"
#include "sipobject/KxSipTag.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipMessageReader.h"
#include "sipobject/messages/KxSipReportedBytes.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"

#include <algorithm>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipReading"};

constexpr std::size_t kURILimit = 1024; // as in KxSipRequest::rejectedByStack, which ends at status 1

/** The headers that a response takes from its request, in the order in which it writes them. */
constexpr HeaderID kNeeded[] = {KxHeaderIDs::kVia, KxHeaderIDs::kFrom, KxHeaderIDs::kTo, KxHeaderIDs::kCallId,
                                KxHeaderIDs::kCSeq};

KxSipReading::Error errorOf(const KxException& failure) {
    using Error = KxSipReading::Error;
    if (dynamic_cast<const KxSipParseKeepAliveException*>(&failure) != nullptr) {
        return Error::KeepAlive;
    }
    if (dynamic_cast<const KxSipParseErrorEmptyHeader*>(&failure) != nullptr) {
        return Error::EmptyHeader;
    }
    return dynamic_cast<const KxSipParseError*>(&failure) != nullptr ? Error::Parse : Error::Other;
}

/** Whether the headers that a response needs are there, all but Via once. */
bool hasNeeded(const KxSipMessage& message) {
    return std::all_of(std::begin(kNeeded), std::end(kNeeded), [&message](HeaderID id) {
        const KxHandle<KxSipHeader>& header = message.getHeaderByID(id);
        return !header.isNil() && (id == KxHeaderIDs::kVia || header->getNext().isNil());
    });
}

/** Whether CSeq names the method, in the same letter case. [RFC 3261 8.1.1.5] */
bool hasOwnCSeq(const KxSipRequest& request) {
    const KxHandle<KxSipCSeqHeader> cseq = request.getCSeqHeader();
    return cseq.isNil() || cseq->getMethod() == request.getMethod();
}

/** The lines of a header section: calls `take` with the beginning of each line and its name, until that returns false.
    Returns whether the section ends with an empty line. */
template <class Take>
bool forEachHeader(std::string_view text, Take take) {
    KxByteArrayInputStream in(text);
    in.consume(std::min(text.find('\n'), text.size() - 1) + 1);
    KxSipLine line;
    for (int c = in.peek(); c >= 0; c = in.peek()) {
        const char* const start = in.window().data();
        if (c == '\r' || c == '\n') {
            in.consume(1);
            if (c == '\n') {
                return true;
            }
        } else if (const KxSipFault fault = line.take(in); !fault && !take(start, line.key())) {
            break;
        }
    }
    return false;
}

/** False for null, for an ACK, and for a response whose "SIP" is misspelled so that it counts as a request. */
bool mayBeAnswered(const KxSipRequest* request) {
    const std::string_view method = request == nullptr ? std::string_view() : request->getMethod();
    return request != nullptr && method != "ACK" && !KxAscii::equalsNoCase(method, "SIP");
}

bool hasControl(std::string_view line) {
    return std::any_of(line.begin(), line.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < ' ' && c != '\t') || byte == 127;
    });
}

/** Makes the headers of a response from those of a request. */
class Echo {
public:
    Echo(const KxSipRequest& request, KxSipResponse& response, std::size_t room)
        : m_request(request), m_response(response), m_room(room) {}

    /** Adds copies of the values of the kind: all, or the first one. Returns whether the first one was added. */
    bool add(HeaderID id, bool all) {
        const KxSipHeader* value = m_request.getHeaderByID(id).get();
        const bool isAdded = value != nullptr && add(*value);
        while (isAdded && all && m_fits && !(value = value->getNext().get(), value == nullptr)) {
            add(*value);
        }
        return isAdded;
    }
    bool fits() const { return m_fits; }

private:
    bool add(const KxSipHeader& value) {
        const KxHandle<KxSipHeader> copy(static_cast<KxSipHeader*>(value.clone()));
        KxByteArrayOutputStream out;
        copy->serialize(out);
        const std::string_view line = out.view();
        if (hasControl(line.substr(0, line.size() - 2))) {
            return false;
        }
        m_fits = m_fits && line.size() <= m_room;
        m_room -= std::min(m_room, line.size());
        m_response.addHeader(copy, false);
        return true;
    }

    const KxSipRequest& m_request;
    KxSipResponse& m_response;
    std::size_t m_room;
    bool m_fits = true;
};

} // namespace

KxSipReading::DroppedLine::DroppedLine(std::string_view bytes, const KxSipFault& fault)
    : text(bytes.substr(0, bytes.find_last_not_of("\r\n") + 1)), m_fault(fault) {}

KxSipReading::DroppedLine::DroppedLine(std::string_view bytes, const KxHandle<KxException>& failure)
    : text(bytes.substr(0, bytes.find_last_not_of("\r\n") + 1)), m_failure(failure) {}

std::string KxSipReading::DroppedLine::why() const {
    return m_failure.isNil() ? m_fault.message() : std::string(m_failure->getExceptionMessage().view());
}

// ---- reading ----

KxSipReading KxSipReading::sRead(std::string_view bytes) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipReading::sRead");
    KxSipReading reading;
    reading.m_begin = std::min(bytes.find_first_not_of("\r\n"), bytes.size());
    reading.m_text = bytes.substr(reading.m_begin);
    if (reading.m_text.empty() && !bytes.empty()) {
        reading.consumed = bytes.size();
        reading.kind = bytes == "\r\n" ? Kind::Pong : bytes == "\r\n\r\n" ? Kind::Ping : Kind::Refused;
        if (reading.kind == Kind::Refused) {
            reading.setError(KxMake<KxSipParseKeepAliveException>("Keep-alive datagram encountered"));
        }
        return reading;
    }
    reading.readMessage();
    return reading;
}

void KxSipReading::readMessage() {
    KxSipReportedBytes in(m_text, dropped);
    try {
        KxSipMessageReader::sConstructFrom(in, message);
        kind = Kind::Message;
    } catch (const KxHandle<KxException>& why) {
        setError(why);
        salvaged.swap(message);
    }
    consumed = m_begin + m_text.size() - in.available();
    if (!salvaged.isNil()) {
        classify(in);
    }
    numberDropped();
    const KxSipRequest* const read = request();
    const unsigned code = faultCode(read);
    m_isUsable = code == 0 && kind == Kind::Message;
    statusCode = mayBeAnswered(read) ? code : 0;
}

/** Finds what kind of refusal it is and where the error is; reads the headers if the start line was refused. */
void KxSipReading::classify(KxSipReportedBytes& in) {
    using Stage = KxSipReportedBytes::Stage;
    const std::size_t lineEnd = m_text.find('\n');
    KxSipMessageReader reader(*salvaged);
    reader.setStatusIfValid(KX_STATUS_UNUSABLE);
    if (in.failure() == Stage::Body || lineEnd == std::string_view::npos) {
        setIncomplete();
    } else if (in.failure() == Stage::StartLine) {
        errorLine = 1;
        errorOffset = m_begin;
        KxSipReportedBytes rest(m_text.substr(lineEnd + 1), dropped);
        reader.salvage(rest);
    } else if (!forEachHeader(m_text, [](const char*, std::string_view) { return true; })) {
        setIncomplete();
    }
}

void KxSipReading::setError(const KxHandle<KxException>& why) {
    failure = why;
    error = errorOf(*why);
    errorText = why->getExceptionMessage();
}

void KxSipReading::setIncomplete() {
    kind = Kind::Incomplete;
    errorLine = static_cast<std::size_t>(std::count(m_text.begin(), m_text.end(), '\n'));
    errorLine += m_text.back() == '\n' ? 0 : 1;
    errorOffset = m_begin + m_text.size();
}

/** One pass over the bytes for all dropped lines, which are in their order. */
void KxSipReading::numberDropped() {
    std::size_t number = 1;
    const char* at = m_text.data();
    for (DroppedLine& line : dropped) {
        number += static_cast<std::size_t>(std::count(at, line.text.data(), '\n'));
        at = line.text.data();
        line.line = number;
    }
}

// ---- judging and answering ----

/** The request that was read or salvaged; null if there is none. */
const KxSipRequest* KxSipReading::request() const {
    const KxHandle<KxSipMessage>& object = message.isNil() ? salvaged : message;
    return object.isNil() ? nullptr : object->as<KxSipRequest>();
}

/** The status code that suits what is wrong, also if it must not be sent; 0 if nothing is. */
unsigned KxSipReading::faultCode(const KxSipRequest* read) const {
    if (message.isNil()) {
        return errorText == "Unsupported Uri Scheme" ? 416 : errorText == "Invalid SIP Version" ? 505 : 400;
    }
    if (message->getStatus() > KX_STATUS_INCOMPLETE || !hasNeeded(*message)) {
        return 400;
    }
    if (read != nullptr && !hasOwnCSeq(*read)) {
        return 400;
    }
    if (!mayBeAnswered(read)) {
        return 0;
    }
    if (read->tooManyHops()) {
        return 483;
    }
    return !read->getURI().isNil() && read->getURI()->getString().length() >= kURILimit ? 414 : 0;
}

/** Whether the first Via line is among those that were dropped. */
bool KxSipReading::losesTopVia() const {
    const char* first = nullptr;
    if (!dropped.empty()) {
        forEachHeader(m_text, [&first](const char* start, std::string_view name) {
            const bool isVia = KxAscii::equalsNoCase(name, KxSipViaHeader::sToken) ||
                               KxAscii::equalsNoCase(name, KxSipViaHeader::sCompactToken);
            first = isVia ? start : nullptr;
            return !isVia;
        });
    }
    const auto found = std::lower_bound(dropped.begin(), dropped.end(), first,
                                        [](const auto& line, const char* at) { return line.text.data() < at; });
    return first != nullptr && found != dropped.end() && found->text.data() == first;
}

KxHandle<KxSipResponse> KxSipReading::response(int code, KxSipText toTag) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipReading::response");
    constexpr std::size_t kGrowth = 400; // and the start line, Content-Length and a To tag
    if (code != 0 && (code < 100 || code >= 700)) {
        KxSipParseError::sThrow("Invalid Response code");
    }
    const int used = code == 0 ? static_cast<int>(statusCode) : code;
    const KxString tag = toTag.line();
    const KxSipRequest* const read = request();
    if (used == 0 || !mayBeAnswered(read) || losesTopVia()) {
        return {};
    }
    const auto made = KxHandle<KxSipResponse>::sOfNew(new KxSipResponse);
    made->m_statusCode = used;
    made->m_reasonPhrase = KxString(KxSipResponse::sPhraseOf(used));
    Echo echo(*read, *made, (kind == Kind::Message ? consumed - m_begin : m_text.size()) + kGrowth);
    std::size_t missing = 0;
    for (const HeaderID id : kNeeded) {
        missing += echo.add(id, id == KxHeaderIDs::kVia) ? 0 : 1;
    }
    if (made->getHeaderByID(KxHeaderIDs::kVia).isNil() || !echo.fits()) {
        return {};
    }
    if (const KxHandle<KxSipToHeader> to = made->getToHeader(); !to.isNil() && !to->isTagPresent()) {
        to->setTag(tag.empty() ? KxSipTag::sRandom().c_str() : tag.c_str());
    }
    made->setBodyOrNone(nullptr, nullptr, 0);
    made->copyConnection(*read);
    made->setStatus(missing == 0 ? KX_STATUS_VALID : KX_STATUS_INCOMPLETE);
    return made;
}
