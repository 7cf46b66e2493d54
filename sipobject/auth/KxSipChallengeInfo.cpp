#include "sipobject/auth/KxSipChallengeInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "sipobject/auth/KxSipOtherChallengeInfo.h"
#include "sipobject/auth/KxSipSchemeLine.h"
#include "util/KxByteArrayInputStream.h"

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
    using Digest = KxSipDigestChallengeInfo;
    return KxSipSchemeLine::sRead<Digest, KxSipOtherChallengeInfo>(
        scheme, Digest::TYPE, "Challenge type not supported !", properties, challenge);
}
