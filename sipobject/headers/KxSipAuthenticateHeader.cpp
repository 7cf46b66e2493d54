#include "sipobject/headers/KxSipAuthenticateHeader.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "sipobject/auth/KxSipOtherChallengeInfo.h"
#include "sipobject/auth/KxSipSchemeLine.h"

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipAuthenticateHeader"};

} // namespace

KxSipAuthenticateHeader::KxSipAuthenticateHeader(const KxString& name, const KxHandle<KxSipChallengeInfo>& challenge)
    : KxSipHeader(name), m_challenge(challenge) {}

KxSipAuthenticateHeader::KxSipAuthenticateHeader(const KxSipAuthenticateHeader& other)
    : KxSipHeader(other), m_challenge(other.m_challenge.isNil() ? nullptr : other.m_challenge->clone()) {}

KxSipAuthenticateHeader::~KxSipAuthenticateHeader() = default;

KxHandle<KxSipDigestChallengeInfo> KxSipAuthenticateHeader::getDigestChallenge() const {
    return KxHandleCast<KxSipDigestChallengeInfo>(m_challenge);
}

void KxSipAuthenticateHeader::doParse(KxInputStream& in) {
    KxSipLine line(in);
    readValue(line).raiseIfAny();
}

KxSipFault KxSipAuthenticateHeader::readValue(KxSipLine& line) {
    const Oskan::TraceScope trace(s_logger, "KxSipAuthenticateHeader::doParse");
    const KxSipSchemeLine value(line);
    KxSipLine parameters(value.parameters());
    return KxSipChallengeInfo::sRead(value.scheme(), parameters, m_challenge);
}

void KxSipAuthenticateHeader::doSerialize(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipAuthenticateHeader::doSerialize");
    KxSipSchemeLine::sWrite<KxSipOtherChallengeInfo>(out, m_challenge);
}
