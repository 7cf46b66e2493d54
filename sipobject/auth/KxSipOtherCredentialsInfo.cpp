#include "sipobject/auth/KxSipOtherCredentialsInfo.h"

#include "util/KxOutputStream.h"

KxSipOtherCredentialsInfo* KxSipOtherCredentialsInfo::clone() const {
    return new KxSipOtherCredentialsInfo(*this);
}

bool KxSipOtherCredentialsInfo::validate(const KxString&, const KxString&, const KxString&) {
    return false;
}

void KxSipOtherCredentialsInfo::serialize(KxOutputStream& out) const {
    out.write(m_text.view());
}

void KxSipOtherCredentialsInfo::setUsername(const KxString&) {}

void KxSipOtherCredentialsInfo::setPassword(const KxString&) {}
