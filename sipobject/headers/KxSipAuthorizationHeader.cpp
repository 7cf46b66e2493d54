#include "sipobject/headers/KxSipAuthorizationHeader.h"

#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/auth/KxSipOtherCredentialsInfo.h"
#include "sipobject/auth/KxSipSchemeLine.h"

constinit const KxConstString KxSipAuthorizationHeader::sToken{"Authorization"};

static const KxSipAuthorizationHeader::Registration s_registration;

KxSipAuthorizationHeader::KxSipAuthorizationHeader(const KxHandle<KxSipCredentialsInfo>& credentials)
    : m_credentials(credentials) {}

KxSipAuthorizationHeader::KxSipAuthorizationHeader(const KxString& name,
                                                   const KxHandle<KxSipCredentialsInfo>& credentials)
    : KxSipHeaderOf(name, kHeaderID), m_credentials(credentials) {}

KxSipAuthorizationHeader::KxSipAuthorizationHeader(const KxSipAuthorizationHeader& other)
    : KxSipHeaderOf(other), m_credentials(other.m_credentials.isNil() ? nullptr : other.m_credentials->clone()) {}

KxSipAuthorizationHeader::~KxSipAuthorizationHeader() = default;

KxHandle<KxSipDigestCredentialsInfo> KxSipAuthorizationHeader::getDigestCredentials() const {
    return KxHandleCast<KxSipDigestCredentialsInfo>(m_credentials);
}

KxSipFault KxSipAuthorizationHeader::parseValue(KxSipLine& line) {
    const KxSipSchemeLine value(line);
    KxSipLine parameters(value.parameters());
    return KxSipCredentialsInfo::sRead(value.scheme(), parameters, m_credentials);
}

void KxSipAuthorizationHeader::serializeValue(KxOutputStream& out) const {
    KxSipSchemeLine::sWrite<KxSipOtherCredentialsInfo>(out, m_credentials);
}
