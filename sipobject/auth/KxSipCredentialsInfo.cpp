#include "sipobject/auth/KxSipCredentialsInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxException.h"

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
    return sConstructFrom(scheme == nullptr ? "" : scheme, in);
}

KxHandle<KxSipCredentialsInfo> KxSipCredentialsInfo::sConstructFrom(std::string_view scheme,
                                                                    KxInputStream& properties) {
    if (!KxSipDigestCredentialsInfo::sm_Type.equalsNoCase(scheme)) {
        KxException::sThrow("Credentials type not supported !");
    }
    KxHandle<KxSipDigestCredentialsInfo> credentials = KxMake<KxSipDigestCredentialsInfo>();
    credentials->parse(properties);
    return credentials;
}
