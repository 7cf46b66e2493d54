#include "sipobject/auth/KxSipCredentialsInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "util/KxByteArrayInputStream.h"

#include <utility>

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
    if (!KxSipDigestCredentialsInfo::sm_Type.equalsNoCase(scheme)) {
        return KxSipFault("Credentials type not supported !", KxSipFault::Error::Other);
    }
    KxHandle<KxSipDigestCredentialsInfo> digest = KxMake<KxSipDigestCredentialsInfo>();
    const KxSipFault fault = digest->read(properties);
    if (!fault) {
        credentials = std::move(digest);
    }
    return fault;
}
