#include "sipobject/auth/KxSipChallengeInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "util/KxByteArrayInputStream.h"

#include <utility>

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
    KxHandle<KxSipChallengeInfo> challenge;
    sRead(scheme == nullptr ? "" : scheme, in, challenge).raiseIfAny();
    return challenge;
}

KxSipFault KxSipChallengeInfo::sRead(std::string_view scheme, KxInputStream& properties,
                                     KxHandle<KxSipChallengeInfo>& challenge) {
    if (!KxSipDigestChallengeInfo::TYPE.equalsNoCase(scheme)) {
        return KxSipFault("Challenge type not supported !", KxSipFault::Error::Other);
    }
    KxHandle<KxSipDigestChallengeInfo> digest = KxMake<KxSipDigestChallengeInfo>();
    const KxSipFault fault = digest->read(properties);
    if (!fault) {
        challenge = std::move(digest);
    }
    return fault;
}
