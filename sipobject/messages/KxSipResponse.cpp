#include "sipobject/messages/KxSipResponse.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLineText.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipTag.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/headers/KxSipAuthenticateHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipRecordRouteHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "sipobject/messages/KxSipTokenText.h"
#include "util/KxInputStream.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

#include <algorithm>
#include <iterator>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipResponse"};
constexpr std::size_t kPhraseLimit = 128;

struct Phrase {
    int code;
    const char* text;
};

/** Sorted by code. */
constexpr Phrase kPhrases[] = {
    {100, "Trying"},
    {180, "Ringing"},
    {181, "Call Is Being Forwarded"},
    {182, "Queued"},
    {183, "Session Progress"},
    {200, "Ok"},
    {300, "Multiple Choices"},
    {301, "Moved Permanently"},
    {302, "Moved Temporarily"},
    {303, "See Other"},
    {305, "Use Proxy"},
    {380, "Alternative Service"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {402, "Payment Required"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {406, "Not Acceptable"},
    {407, "Proxy Authentication Required"},
    {408, "Request Timeout"},
    {409, "Conflict"},
    {410, "Gone"},
    {411, "Length Required"},
    {413, "Request Message Body Too Large"},
    {414, "Request-URI Too Large"},
    {415, "Unsupported Media Type"},
    {416, "Unsupported URI Scheme"},
    {420, "Bad Extension"},
    {421, "Extension Required"},
    {422, "Session Timer Too Small"},
    {480, "Temporarily not available"},
    {481, "Call/Transaction Does Not Exist"},
    {482, "Loop Detected"},
    {483, "Too Many Hops"},
    {484, "Address Incomplete"},
    {485, "Ambiguous"},
    {486, "Busy Here"},
    {487, "Transaction Cancelled"},
    {488, "Not Acceptable Here"},
    {491, "Request Pending"},
    {493, "Undecipherable"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
    {505, "SIP Version not supported"},
    {513, "Message Too Large"},
    {600, "Busy Everywhere"},
    {603, "Decline"},
    {604, "Does not exist anywhere"},
    {606, "Not Acceptable"},
};

/** The phrases of the RFCs where they are others, or more. Sorted by code. */
constexpr Phrase kRFCPhrases[] = {
    {199, "Early Dialog Terminated"}, // RFC 6228
    {200, "OK"},
    {202, "Accepted"},                   // RFC 6665
    {204, "No Notification"},            // RFC 5839
    {412, "Conditional Request Failed"}, // RFC 3903
    {413, "Request Entity Too Large"},
    {414, "Request-URI Too Long"},
    {417, "Unknown Resource-Priority"},  // RFC 4412
    {422, "Session Interval Too Small"}, // RFC 4028
    {423, "Interval Too Brief"},
    {424, "Bad Location Information"},         // RFC 6442
    {425, "Bad Alert Message"},                // RFC 8876
    {428, "Use Identity Header"},              // RFC 8224
    {429, "Provide Referrer Identity"},        // RFC 3892
    {430, "Flow Failed"},                      // RFC 5626
    {433, "Anonymity Disallowed"},             // RFC 5079
    {436, "Bad Identity Info"},                // RFC 8224
    {437, "Unsupported Credential"},           // RFC 8224
    {438, "Invalid Identity Header"},          // RFC 8224
    {439, "First Hop Lacks Outbound Support"}, // RFC 5626
    {440, "Max-Breadth Exceeded"},             // RFC 5393
    {469, "Bad Info Package"},                 // RFC 6086
    {470, "Consent Needed"},                   // RFC 5360
    {480, "Temporarily Unavailable"},
    {487, "Request Terminated"},
    {489, "Bad Event"},                   // RFC 6665
    {494, "Security Agreement Required"}, // RFC 3329
    {500, "Server Internal Error"},
    {504, "Server Time-out"},
    {505, "Version Not Supported"},
    {555, "Push Notification Service Not Supported"}, // RFC 8599
    {580, "Precondition Failure"},                    // RFC 3312
    {604, "Does Not Exist Anywhere"},
    {607, "Unwanted"}, // RFC 8197
    {608, "Rejected"}, // RFC 8688
};

/** The phrases for codes that are not in the table, by class. The first one is for codes outside all classes. */
constexpr const char* kUnknown[] = {
    "Unknown Response",           "Unknown 100 Class Response", "Unknown 200 Class Response",
    "Unknown 300 Class Response", "Unknown 400 Class Response", "Unknown 500 Class Response",
    "Unknown 600 Class Response",
};

bool fits(const KxString& phrase) {
    return phrase.length() < kPhraseLimit || KxSipGrammar::sKeepsLongPhrases();
}

void checkCode(int code) {
    if (code < 100 || code >= 700) {
        KxSipParseError::sThrow("Invalid Response code");
    }
}

/** Whether responses to the method never belong to the making of a dialog. */
bool hasNoDialog(std::string_view method) {
    return method == "BYE" || method == "CANCEL";
}

/** Whether a 2xx response to the method makes or refreshes a dialog. [RFC 3261 12.1.1, RFC 3311 5.2, RFC 3515 2.4.4,
    RFC 6665 3.1.1] */
bool needsContact(std::string_view method) {
    return method == "INVITE" || method == "REFER" || method == "SUBSCRIBE" || method == "UPDATE";
}

} // namespace

constinit const KxConstString KxSipResponse::sMethodName{"SIP"};

static const KxSipMessage::Registration<KxSipResponse> s_registration;

KxSipResponse::KxSipResponse() = default;

KxSipResponse::KxSipResponse(const KxSipResponse& other) : KxSipResponse(other, Lock(other)) {}

KxSipResponse::KxSipResponse(const KxSipResponse& other, const Lock& held)
    : KxSipMessage(other, held), m_statusCode(other.m_statusCode), m_reasonPhrase(other.m_reasonPhrase) {}

KxSipResponse::KxSipResponse(int statusCode, const KxHandle<KxSipRequest>& request, const void* body,
                             const char* contentType, std::uint32_t bodyLength) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipResponse ctor");
    checkCode(statusCode);
    if (request.isNil()) {
        KxSipParseError::sThrow("Handle to request is NIL");
    }
    answer(statusCode, *request);
    if (hasNoDialog(request->getMethod())) {
        setBodyOrNone(nullptr, nullptr, 0);
    } else {
        setBodyOrNone(body, contentType, bodyLength);
        if (statusCode / 100 == 2) {
            addCopiesOf(*request, KxHeaderIDs::kRecordRoute);
        }
    }
    copyConnection(*request);
    KxSipResponse::checkValidity();
}

/** Sets the status line and adds the headers that every response repeats. */
void KxSipResponse::answer(int statusCode, const KxSipRequest& request) {
    m_statusCode = statusCode;
    m_reasonPhrase = KxString(sPhraseOf(statusCode));
    addCopiesOf(request, KxHeaderIDs::kVia);
    addCopyOf(request, KxHeaderIDs::kFrom);
    addCopyOf(request, KxHeaderIDs::kTo);
    addCopyOf(request, KxHeaderIDs::kCallId);
    addCopyOf(request, KxHeaderIDs::kCSeq);
    auto* const cseq = first<KxSipCSeqHeader>();
    if (cseq != nullptr && cseq->getMethod().empty()) {
        cseq->setMethod(KxString(request.getMethod()));
    }
}

KxHandle<KxSipResponse> KxSipResponse::sBuild(const KxSipRequest& request, const KxSipResponseParts& parts) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipResponse::sBuild");
    checkCode(parts.statusCode);
    const std::string_view method(request.getMethod());
    if (method == "ACK") {
        KxSipParseError::sThrow("An ACK has no response");
    }
    const KxHandle<KxSipContactHeader> contact = parts.contact.make();
    if (contact.isNil() && parts.statusCode / 100 == 2 && needsContact(method)) {
        KxSipText::sRaiseMissing("Contact");
    }
    auto response = KxHandle<KxSipResponse>::sOfNew(new KxSipResponse);
    response->answer(parts.statusCode, request);
    if (!parts.reasonPhrase.isNone()) {
        response->m_reasonPhrase = parts.reasonPhrase.line();
        if (!fits(response->m_reasonPhrase)) {
            KxSipParseError::sThrow("The reason phrase is too long");
        }
    }
    if (parts.statusCode == 100) {
        response->addCopyOf(request, KxHeaderIDs::kTimestamp);
    } else {
        response->addToTag(parts.toTag);
    }
    if (parts.statusCode > 100 && parts.statusCode < 300 && !hasNoDialog(method)) {
        response->addCopiesOf(request, KxHeaderIDs::kRecordRoute);
    }
    response->asynchAddHeader(contact, false);
    response->setBody(parts.body, parts.contentType);
    response->copyConnection(request);
    response->checkValidity();
    return response;
}

/** Adds the tag, or a new one, unless To has one. */
void KxSipResponse::addToTag(const KxSipText& tag) {
    const KxHandle<KxSipToHeader> to = getToHeader();
    if (!to.isNil() && !to->isTagPresent()) {
        to->setTag((tag.isNone() ? KxSipTag::sRandom() : KxSipTokenText::sChecked(tag, "To tag")).c_str());
    }
}

KxSipResponse* KxSipResponse::clone() const {
    return new KxSipResponse(*this);
}

const char* KxSipResponse::sPhraseOf(int statusCode) {
    const auto find = [statusCode](const auto& phrases) -> const char* {
        const auto* const found =
            std::lower_bound(std::begin(phrases), std::end(phrases), statusCode,
                             [](const Phrase& phrase, int wanted) { return phrase.code < wanted; });
        return found != std::end(phrases) && found->code == statusCode ? found->text : nullptr;
    };
    const char* phrase = KxSipGrammar::sHasRFCPhrases() ? find(kRFCPhrases) : nullptr;
    phrase = phrase == nullptr ? find(kPhrases) : phrase;
    return phrase != nullptr ? phrase : kUnknown[statusCode >= 100 && statusCode < 700 ? statusCode / 100 : 0];
}

bool KxSipResponse::isRequest() const {
    return false;
}

void KxSipResponse::setReasonPhrase(const char* phrase) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipResponse::setReasonPhrase");
    const Lock lock(*this);
    m_reasonPhrase = KxString(phrase == nullptr ? "" : phrase);
}

/** The topmost header, of the values from `first` on, whose challenge can be answered; nil if there is none. */
static KxHandle<KxSipAuthenticateHeader> answerable(const KxHandle<KxSipHeader>& first) {
    for (KxSipHeader* value = first.get(); value != nullptr; value = value->getNext().get()) {
        auto* const header = dynamic_cast<KxSipAuthenticateHeader*>(value);
        if (header != nullptr && KxSipDigestCredentialsInfo::sCanAnswer(header->getChallenge())) {
            return KxHandle<KxSipAuthenticateHeader>(header);
        }
    }
    return {};
}

KxHandle<KxSipAuthenticateHeader> KxSipResponse::getAuthenticateHeader() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipResponse::getAuthenticateHeader");
    if (KxSipGrammar::sPicksAnswerableChallenge()) {
        for (const HeaderID kind : {KxHeaderIDs::kWWWAuthenticate, KxHeaderIDs::kProxyAuthenticate}) {
            KxHandle<KxSipAuthenticateHeader> topmost = answerable(getHeaderByID(kind));
            if (!topmost.isNil()) {
                return topmost;
            }
        }
    }
    const KxHandle<KxSipHeader>& own = firstRead(KxHeaderIDs::kWWWAuthenticate);
    return KxHandleCast<KxSipAuthenticateHeader>(own.isNil() ? firstRead(KxHeaderIDs::kProxyAuthenticate) : own);
}

void KxSipResponse::removeViaHeader() {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipResponse::removeViaHeader");
    while (removeHeader(KxSipViaHeader::sToken)) {
    }
}

void KxSipResponse::removeRecordRouteHeader() {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipResponse::removeRecordRouteHeader");
    while (removeHeader(KxSipRecordRouteHeader::sToken)) {
    }
}

void KxSipResponse::parseStartLine(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipResponse::parseStartLine");
    in.read(); // the "/"
    const std::uint32_t high = KxStreamTokenizer::sGetUnsigned(in);
    if (in.read() != '.') {
        KxSipParseError::sThrow("'.' expected in response start line");
    }
    setVersion(high, KxStreamTokenizer::sGetUnsigned(in));
    m_statusCode = static_cast<std::int32_t>(KxStreamTokenizer::sGetUnsigned(in));
    if (KxSipGrammar::sHasExactStartLines()) {
        checkCode(m_statusCode);
    }
    const bool ended = !in.fill();
    const KxString line = KxStreamTokenizer::sGetLine(in);
    std::string_view phrase = line.view();
    if (phrase.starts_with('\r')) { // it is dropped, so that the blanks after it are the leading ones
        phrase.remove_prefix(std::min(phrase.find_first_not_of(" \t\r"), phrase.size()));
    }
    m_reasonPhrase = KxSipLineText::sOf(phrase);
    if (ended || !fits(m_reasonPhrase)) {
        KxSipParseError::sThrow("unexpected end of response start line");
    }
}

void KxSipResponse::serializeStartLine(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipResponse::serializeStartLine");
    out.writeAll(std::string_view("SIP/", 4), getVersionHigh(), '.', getVersionLow(), ' ', getStatusCode(), ' ',
                 m_reasonPhrase, std::string_view("\r\n", 2));
}
