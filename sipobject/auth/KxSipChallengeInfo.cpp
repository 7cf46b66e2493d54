#include "sipobject/auth/KxSipChallengeInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxException.h"

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipChallengeInfo"};

} // namespace

constinit Oskan::MemAccount KxSipChallengeInfo::s_account{"KxSipChallengeInfo"};

KxSipChallengeInfo::~KxSipChallengeInfo() = default;

void KxSipChallengeInfo::display(KxOutputStream& out, bool) const {
    serialize(out);
}

KxHandle<KxSipChallengeInfo> KxSipChallengeInfo::constructFrom(const char* scheme,
                                                               const KxHandle<KxByteArray>& properties) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipChallengeInfo::constructFrom");
    KxByteArrayInputStream in(properties);
    return sConstructFrom(scheme == nullptr ? "" : scheme, in);
}

KxHandle<KxSipChallengeInfo> KxSipChallengeInfo::sConstructFrom(std::string_view scheme, KxInputStream& properties) {
    if (!KxSipDigestChallengeInfo::TYPE.equalsNoCase(scheme)) {
        KxException::sThrow("Challenge type not supported !");
    }
    KxHandle<KxSipDigestChallengeInfo> challenge = KxMake<KxSipDigestChallengeInfo>();
    challenge->parse(properties);
    return challenge;
}
