#include "sipobject/messages/KxSipResponse.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipParseError.h"
#include "util/KxInputStream.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipResponse"};
constexpr std::size_t kPhraseLimit = 128;

} // namespace

constinit const KxConstString KxSipResponse::sMethodName{"SIP"};

static const KxSipMessage::Registration<KxSipResponse> s_registration;

KxSipResponse::KxSipResponse() = default;

KxSipResponse::KxSipResponse(const KxSipResponse& other) = default;

KxSipResponse* KxSipResponse::clone() const {
    return new KxSipResponse(*this);
}

bool KxSipResponse::isRequest() const {
    return false;
}

void KxSipResponse::setReasonPhrase(const char* phrase) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipResponse::setReasonPhrase");
    const KxMutexLock lock(mutex());
    m_reasonPhrase = KxString(phrase == nullptr ? "" : phrase);
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
    const bool ended = !in.fill();
    m_reasonPhrase = KxStreamTokenizer::sGetLine(in);
    if (ended || m_reasonPhrase.length() >= kPhraseLimit) {
        KxSipParseError::sThrow("unexpected end of response start line");
    }
}

void KxSipResponse::serializeStartLine(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipResponse::serializeStartLine");
    out << "SIP/" << getVersionHigh() << '.' << getVersionLow() << ' ' << getStatusCode() << ' ' << m_reasonPhrase
        << std::string_view("\r\n", 2);
}
