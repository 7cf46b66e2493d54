#include "sipobject/auth/KxSipCredentialsInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/auth/KxSipOtherCredentialsInfo.h"
#include "sipobject/auth/KxSipSchemeLine.h"
#include "util/KxByteArrayInputStream.h"

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipCredentialsInfo"};

} // namespace

constinit Oskan::MemAccount KxSipCredentialsInfo::s_account{"KxSipCredentialsInfo"};

KxSipCredentialsInfo::~KxSipCredentialsInfo() = default;

void KxSipCredentialsInfo::display(KxOutputStream& out, bool) const {
    serialize(out);
}

KxHandle<KxSipCredentialsInfo> KxSipCredentialsInfo::constructFrom(const char* scheme,
                                                                   const KxHandle<KxByteArray>& properties) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipCredentialsInfo::constructFrom");
    KxByteArrayInputStream in(properties);
    KxHandle<KxSipCredentialsInfo> credentials;
    sRead(scheme == nullptr ? "" : scheme, in, credentials).raiseIfAny();
    return credentials;
}

KxSipFault KxSipCredentialsInfo::sRead(std::string_view scheme, KxInputStream& properties,
                                       KxHandle<KxSipCredentialsInfo>& credentials) {
    using Digest = KxSipDigestCredentialsInfo;
    return KxSipSchemeLine::sRead<Digest, KxSipOtherCredentialsInfo>(
        scheme, Digest::sm_Type, "Credentials type not supported !", properties, credentials);
}
