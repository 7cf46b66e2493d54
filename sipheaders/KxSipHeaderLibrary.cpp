#include "sipheaders/KxSipHeaderLibrary.h"

#include "sipheaders/KxSipAcceptContactHeader.h"
#include "sipheaders/KxSipAcceptResourcePriorityHeader.h"
#include "sipheaders/KxSipDiversionHeader.h"
#include "sipheaders/KxSipGeolocationHeader.h"
#include "sipheaders/KxSipHistoryInfoHeader.h"
#include "sipheaders/KxSipIdentityHeader.h"
#include "sipheaders/KxSipMaxBreadthHeader.h"
#include "sipheaders/KxSipPAccessNetworkInfoHeader.h"
#include "sipheaders/KxSipPAssertedIdentityHeader.h"
#include "sipheaders/KxSipPAssociatedURIHeader.h"
#include "sipheaders/KxSipPCalledPartyIDHeader.h"
#include "sipheaders/KxSipPChargingVectorHeader.h"
#include "sipheaders/KxSipPEarlyMediaHeader.h"
#include "sipheaders/KxSipPPreferredIdentityHeader.h"
#include "sipheaders/KxSipPathHeader.h"
#include "sipheaders/KxSipPrivacyHeader.h"
#include "sipheaders/KxSipReasonHeader.h"
#include "sipheaders/KxSipReferSubHeader.h"
#include "sipheaders/KxSipRejectContactHeader.h"
#include "sipheaders/KxSipRemotePartyIDHeader.h"
#include "sipheaders/KxSipReplyToHeader.h"
#include "sipheaders/KxSipRequestDispositionHeader.h"
#include "sipheaders/KxSipResourcePriorityHeader.h"
#include "sipheaders/KxSipSIPETagHeader.h"
#include "sipheaders/KxSipSIPIfMatchHeader.h"
#include "sipheaders/KxSipSecurityClientHeader.h"
#include "sipheaders/KxSipSecurityServerHeader.h"
#include "sipheaders/KxSipSecurityVerifyHeader.h"
#include "sipheaders/KxSipServiceRouteHeader.h"
#include "sipheaders/KxSipSessionIDHeader.h"
#include "sipheaders/KxSipSubscriptionStateHeader.h"
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
        registerAll<KxSipAcceptContactHeader, KxSipAcceptResourcePriorityHeader, KxSipDiversionHeader,
                    KxSipGeolocationHeader, KxSipHistoryInfoHeader, KxSipIdentityHeader, KxSipMaxBreadthHeader,
                    KxSipPAccessNetworkInfoHeader, KxSipPAssertedIdentityHeader, KxSipPAssociatedURIHeader,
                    KxSipPCalledPartyIDHeader, KxSipPChargingVectorHeader, KxSipPEarlyMediaHeader,
                    KxSipPPreferredIdentityHeader, KxSipPathHeader, KxSipPrivacyHeader, KxSipReasonHeader,
                    KxSipReferSubHeader, KxSipRejectContactHeader, KxSipRemotePartyIDHeader, KxSipReplyToHeader,
                    KxSipRequestDispositionHeader, KxSipResourcePriorityHeader, KxSipSIPETagHeader,
                    KxSipSIPIfMatchHeader, KxSipSecurityClientHeader, KxSipSecurityServerHeader,
                    KxSipSecurityVerifyHeader, KxSipServiceRouteHeader, KxSipSessionIDHeader,
                    KxSipSubscriptionStateHeader, KxSipUserToUserHeader>();
        s_isEnabled = true;
    }
}

bool KxSipHeaderLibrary::sIsEnabled() {
    return s_isEnabled;
}
