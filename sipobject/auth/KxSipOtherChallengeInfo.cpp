#include "sipobject/auth/KxSipOtherChallengeInfo.h"

#include "sipobject/KxSipLine.h"
#include "sipobject/auth/KxSipAuthParamReader.h"
#include "util/KxOutputStream.h"

KxSipOtherChallengeInfo* KxSipOtherChallengeInfo::clone() const {
    return new KxSipOtherChallengeInfo(*this);
}

void KxSipOtherChallengeInfo::serialize(KxOutputStream& out) const {
    out.write(m_text.view());
}

KxString KxSipOtherChallengeInfo::getRealm() const {
    KxParameters properties;
    KxSipLine text(m_text.view());
    const KxSipFault fault = KxSipAuthParamReader(properties, nullptr).read(text, true);
    return fault ? KxString() : properties.getValue("realm");
}
