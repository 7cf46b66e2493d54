#include "sipobject/messages/KxSipMessageReader.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipParseKeepAliveException.h"
#include "sipobject/headers/KxSipAcceptHeader.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "sipobject/headers/KxSipHeaderKinds.h"
#include "sipobject/messages/KxSipReportedBytes.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "util/KxBytes.h"
#include "util/KxErrorStream.h"
#include "util/KxInputStream.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipMessage"}; // reading is traced as part of the message
constexpr KxCharSet kTokenEnd(" /\t\r\n");

/** The message classes by start token. Filled by static initialisers, and only read once the library is loaded. */
struct StartToken {
    KxString text;
    KxSipMessage::Creator creator;
    const StartToken* next;
};
constexpr int kBucketBits = 5;
constinit std::array<const StartToken*, std::size_t{1} << kBucketBits> s_startTokens{};

const StartToken*& bucketOf(std::string_view text) {
    return s_startTokens[KxBytes::Ends(text.data(), text.size()).hash(kBucketBits)];
}

const StartToken* findStartToken(std::string_view text) {
    const StartToken* token = bucketOf(text);
    while (token != nullptr &&
           (token->text.length() != text.size() || !KxBytes::equal(token->text.c_str(), text.data(), text.size()))) {
        token = token->next;
    }
    return token;
}

/** Typed access walks over values that are kept as text, so that a loop of edits would take too long for more lines. */
constexpr std::size_t kMostKept = 1000;

constexpr KxSipFault kRepeated{"SIP Header parse error : header repeated"};

/** Whether a kind of which there are two may have only one. */
bool isRepeated(HeaderID id) {
    return KxSipGrammar::sChecksRepetition() && KxSipHeaderKinds::sIsOnce(id);
}

std::string textOf(const KxSipFault& fault) {
    return fault.message();
}

std::string_view textOf(const KxHandle<KxException>& failure) {
    return failure->getExceptionMessage().view();
}

/** Whether the stream still has that many bytes. */
bool holds(KxInputStream& in, std::size_t count) {
    while (in.window().size() < count && in.extendWindow()) {
    }
    return in.window().size() >= count;
}

void noteFault(const char* what, const KxException& why) {
    KxOutputStream& notes = KxErrorStream::sGetDefault().getDebugStream("KxSipMessage", 0);
    notes << what << why.getExceptionMessage() << endl;
    notes.flush();
}

} // namespace

void KxSipMessageReader::sAddConstructor(const KxString& token, KxSipMessage* (*creator)()) {
    if (findStartToken(token) == nullptr) {
        const StartToken*& first = bucketOf(token);
        first = new StartToken{token, creator, first}; // never freed
    }
}

KxHandle<KxSipMessage> KxSipMessageReader::sEmpty(std::string_view token) {
    const StartToken* const known = findStartToken(token);
    return KxHandle<KxSipMessage>::sOfNew(known != nullptr ? known->creator() : new KxSipUnknownRequest);
}

KxHandle<KxSipMessage> KxSipMessageReader::sConstructFrom(KxInputStream& in) {
    KxHandle<KxSipMessage> message;
    sConstructFrom(in, message);
    return message;
}

void KxSipMessageReader::sConstructFrom(KxInputStream& in, KxHandle<KxSipMessage>& message) {
    KxSipGrammar::sFix();
    if (in.peek() < 0) {
        KxSipParseError::sThrow("SIP Method Token Expected");
    }
    KxScannedText scanned;
    const std::string_view text = scanned.until(in, kTokenEnd);
    const KxString token(text.substr(0, text.find('\0'))); // up to a NUL, since the message is given a C string
    if (token.empty()) {
        s_logger.log(Oskan::LogLevel::Debug, "KxSipMessage::sConstructFrom : datagram starting with whitespace: "
                                             "treating as keep-alive ");
        KxSipParseKeepAliveException::sThrow("Keep-alive datagram encountered");
    }
    message =
        sEmpty(KxSipGrammar::sIgnoresCaseOfVersion() && token.equalsNoCase("SIP") ? std::string_view("SIP") : token);
    message->parse(token.c_str(), in);
}

void KxSipMessageReader::salvage(KxInputStream& headerSection) {
    for (const HeaderID id : m_message.getHeaderOrder()) { // they are from the Request-URI
        m_message.removeByID(id, static_cast<std::size_t>(-1));
    }
    readHeaders(headerSection);
}

void KxSipMessageReader::setStatusIfValid(KxStatus status) {
    if (m_message.m_status == KX_STATUS_VALID) {
        m_message.m_status = status;
    }
}

void KxSipMessageReader::read(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::parse");
    try {
        m_message.parseStartLine(in);
    } catch (const KxHandle<KxSipParseKeepAliveException>&) {
        throw;
    } catch (const KxHandle<KxException>&) {
        KxSipReportedBytes::sNoteFailure(in, KxSipReportedBytes::Stage::StartLine);
        setStatusIfValid(KX_STATUS_UNUSABLE);
        throw;
    }
    try {
        readHeaders(in);
    } catch (const KxHandle<KxException>& failure) {
        noteFault("Exception occurred while parsing headers of message: ", *failure);
        setStatusIfValid(KX_STATUS_UNUSABLE);
        return;
    }
    if (!m_refusal.isNil()) {
        m_message.m_status = KX_STATUS_UNUSABLE;
        KxSipParseError::sThrow(m_refusal->getExceptionMessage());
    }
    try {
        readBody(in);
    } catch (const KxHandle<KxException>& failure) {
        KxSipReportedBytes::sNoteFailure(in, KxSipReportedBytes::Stage::Body);
        noteFault("KxException Occurred while parsing body of message: ", *failure);
        m_message.m_status = KX_STATUS_INCOMPLETE;
        throw;
    }
    if (m_message.getHeaderByID(KxHeaderIDs::kContentLength).isNil()) {
        m_message.m_headers.addUnlisted(KxMake<KxSipContentLengthHeader>(0U));
    }
    if (m_message.m_status == KX_STATUS_VALID || KxSipGrammar::sRefusesWithoutRequired()) {
        m_message.checkValidity();
    }
}

void KxSipMessageReader::readHeaders(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::parseHeaders");
    KxSipLine line;
    if (KxSipGrammar::sReadsLinesByValue()) {
        line.setReadTwice();
    }
    const bool isNoted =
        line.isReadTwice() || KxSipReportedBytes::sOf(in) != nullptr || s_logger.isEnabled(Oskan::LogLevel::Debug);
    KxSipHeaderSlots& headers = m_message.m_headers;
    KxHandle<KxSipHeader> header; // nil before each line
    for (int c = in.peek(); c >= 0; c = in.peek()) {
        if (c <= '\r' && (c == '\r' || c == '\n')) {
            in.consume(1);
            if (c == '\n') {
                break;
            }
            continue;
        }
        const char* const start = in.window().data();
        try {
            const KxSipFault fault = KxSipHeader::sConstructFrom(in, line, header);
            if (!fault) [[likely]] {
                const Oskan::TraceScope adding(s_logger, "KxSipMessage::asynchAddHeader");
                const HeaderID again = headers.addRead(std::move(header));
                if (again != KxHeaderIDs::kNone && isRepeated(again)) [[unlikely]] {
                    note(in, line, start, true, kRepeated);
                }
            } else if (isNoted) {
                note(in, line, start, addIfKept(header), fault);
            } else {
                setStatusIfValid(KX_STATUS_INCOMPLETE);
            }
        } catch (const KxHandle<KxException>& failure) {
            note(in, line, start, line.isReadTwice() && !line.isLost() && !line.key().empty() && keepByValue(line),
                 failure);
        }
    }
    if (KxSipGrammar::sMergesEqualLengths()) {
        mergeEqualLengths();
    }
    if (m_message.m_status == KX_STATUS_VALID && KxSipGrammar::sAppliesAcceptToOwnBody() && !acceptsOwnBodyType()) {
        m_message.m_status = KX_STATUS_UNUSABLE;
    }
}

/** Adds a header that was read by value, if it is not nil; returns whether it was. */
[[gnu::noinline]] bool KxSipMessageReader::addIfKept(KxHandle<KxSipHeader>& header) {
    const bool isKept = !header.isNil();
    if (isKept) {
        m_message.m_headers.addRead(std::move(header));
    }
    return isKept;
}

/** Adds what can be read of a line for which a header class threw an error, and the rest as text. Returns false for a
    line that can't be kept. */
[[gnu::noinline]] bool KxSipMessageReader::keepByValue(const KxSipLine& line) {
    KxHandle<KxSipHeader> header;
    static_cast<void>(KxSipHeader::sReadByValue(line, header));
    return addIfKept(header);
}

/** Notes that something in the line from `start` on can't be read. If it is not kept, and the line has a name, this may
    be a reason to refuse the message. */
template <class Why>
[[gnu::noinline]] void KxSipMessageReader::note(KxInputStream& in, KxSipLine& line, const char* start, bool isKept,
                                                const Why& why) {
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug,
                     std::string("Caught KxException from KxSipHeader::sConstructFrom(): ").append(textOf(why)));
    }
    setStatusIfValid(KX_STATUS_INCOMPLETE);
    if (line.isReadTwice() && m_refusal.isNil() && !line.key().empty()) {
        if (!isKept) {
            m_refusal = KxMake<KxSipParseError>(textOf(why));
        } else if (++m_keptLines > kMostKept) {
            m_refusal = KxMake<KxSipParseError>("Too many header lines can't be read");
        }
        if (!m_refusal.isNil()) {
            line.setLost();
        }
    }
    if (KxSipReportedBytes* const report = KxSipReportedBytes::sOf(in)) {
        report->noteDropped(start, why);
    }
}

/** Removes all Content-Lengths but one, if they say the same. */
void KxSipMessageReader::mergeEqualLengths() {
    const auto lengths = m_message.values<KxSipContentLengthHeader>();
    const auto isSame = [&lengths](const KxSipContentLengthHeader& length) {
        return length.getContentLength() == lengths.begin()->getContentLength();
    };
    if (!lengths.empty() && std::all_of(lengths.begin(), lengths.end(), isSame)) {
        while (!m_message.getHeaderByID(KxHeaderIDs::kContentLength)->getNext().isNil()) {
            m_message.removeFirst<KxSipContentLengthHeader>();
        }
    }
}

/** False if the message has Accept headers and none of them is exactly the type of its own body; wildcards do not
    match. */
bool KxSipMessageReader::acceptsOwnBodyType() const {
    const KxSipHeader* value = m_message.getHeaderByID(KxHeaderIDs::kAccept).get();
    if (value == nullptr) {
        return true;
    }
    const KxHandle<KxSipContentTypeHeader> type = m_message.getContentTypeHeader();
    if (type.isNil()) {
        return true;
    }
    for (; value != nullptr; value = value->getNext().get()) {
        if (typeid(*value) != typeid(KxSipAcceptHeader)) {
            continue; // an application's own class with the identifier of Accept
        }
        const auto* const accepted = static_cast<const KxSipAcceptHeader*>(value);
        if (accepted->getType() == type->getType() && accepted->getSubType() == type->getSubType()) {
            return true;
        }
    }
    return false;
}

void KxSipMessageReader::readBody(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::parseBody");
    std::size_t length = 0;
    if (!m_message.getHeaderByID(KxHeaderIDs::kContentLength).isNil()) {
        const bool cameWithURI = m_message.hasBody() && !in.fill(); // "?body=", and none after the headers
        length = cameWithURI ? 0 : m_message.getBodyLength();
        if (!holds(in, length)) {
            KxSipParseError::sThrow("message body is shorter than Content-Length");
        }
    } else {
        while (in.extendWindow()) {
        }
        length = in.window().size();
        const auto written = std::min<std::size_t>(length, std::numeric_limits<std::uint32_t>::max());
        m_message.asynchAddHeader(KxMake<KxSipContentLengthHeader>(static_cast<std::uint32_t>(written)), false);
    }
    if (length != 0) {
        m_message.m_body = KxSipBody(in.window().data(), length);
        in.consume(length);
    }
}
