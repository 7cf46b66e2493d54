#include "sipheaders/KxSipHeaderLibrary.h"

#include "sipheaders/KxSipIdentityHeader.h"
#include "sipheaders/KxSipPAccessNetworkInfoHeader.h"
#include "sipheaders/KxSipPAssertedIdentityHeader.h"
#include "sipheaders/KxSipPAssociatedURIHeader.h"
#include "sipheaders/KxSipPCalledPartyIDHeader.h"
#include "sipheaders/KxSipPChargingVectorHeader.h"
#include "sipheaders/KxSipPEarlyMediaHeader.h"
#include "sipheaders/KxSipPPreferredIdentityHeader.h"
#include "sipheaders/KxSipPrivacyHeader.h"
#include "sipheaders/KxSipReasonHeader.h"
#include "sipheaders/KxSipRemotePartyIDHeader.h"
#include "sipheaders/KxSipReplyToHeader.h"
#include "sipheaders/KxSipSecurityClientHeader.h"
#include "sipheaders/KxSipSecurityServerHeader.h"
#include "sipheaders/KxSipSecurityVerifyHeader.h"
#include "sipheaders/KxSipSessionIDHeader.h"
#include "sipheaders/KxSipUserToUserHeader.h"
#include "util/KxException.h"

namespace {

constinit bool s_isEnabled = false;

template <class... H>
void registerAll() {
    (static_cast<void>(typename H::Registration()), ...);
}

} // namespace

void KxSipHeaderLibrary::sEnable() {
    if (KxSipGrammar::sChosen() != KxSipGrammar::Choice::RFC) {
        KxException::sThrow("The headers of libkxsipheaders need the RFC grammar");
    }
    KxSipGrammar::sFix();
    if (!s_isEnabled) {
        registerAll<KxSipIdentityHeader, KxSipPAccessNetworkInfoHeader, KxSipPAssertedIdentityHeader,
                    KxSipPAssociatedURIHeader, KxSipPCalledPartyIDHeader, KxSipPChargingVectorHeader,
                    KxSipPEarlyMediaHeader, KxSipPPreferredIdentityHeader, KxSipPrivacyHeader, KxSipReasonHeader,
                    KxSipRemotePartyIDHeader, KxSipReplyToHeader, KxSipSecurityClientHeader, KxSipSecurityServerHeader,
                    KxSipSecurityVerifyHeader, KxSipSessionIDHeader, KxSipUserToUserHeader>();
        s_isEnabled = true;
    }
}

bool KxSipHeaderLibrary::sIsEnabled() {
    return s_isEnabled;
}
