#include "sipheaders/KxSipHeaderLibrary.h"

#include "sipheaders/KxSipAcceptContactHeader.h"
#include "sipheaders/KxSipAcceptResourcePriorityHeader.h"
#include "sipheaders/KxSipDiversionHeader.h"
#include "sipheaders/KxSipGeolocationHeader.h"
#include "sipheaders/KxSipHistoryInfoHeader.h"
#include "sipheaders/KxSipMaxBreadthHeader.h"
#include "sipheaders/KxSipPAssertedIdentityHeader.h"
#include "sipheaders/KxSipPathHeader.h"
#include "sipheaders/KxSipReasonHeader.h"
#include "sipheaders/KxSipReferSubHeader.h"
#include "sipheaders/KxSipRejectContactHeader.h"
#include "sipheaders/KxSipRequestDispositionHeader.h"
#include "sipheaders/KxSipResourcePriorityHeader.h"
#include "sipheaders/KxSipSIPETagHeader.h"
#include "sipheaders/KxSipSIPIfMatchHeader.h"
#include "sipheaders/KxSipServiceRouteHeader.h"
#include "sipheaders/KxSipSubscriptionStateHeader.h"
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
                    KxSipGeolocationHeader, KxSipHistoryInfoHeader, KxSipMaxBreadthHeader, KxSipPAssertedIdentityHeader,
                    KxSipPathHeader, KxSipReasonHeader, KxSipReferSubHeader, KxSipRejectContactHeader,
                    KxSipRequestDispositionHeader, KxSipResourcePriorityHeader, KxSipSIPETagHeader,
                    KxSipSIPIfMatchHeader, KxSipServiceRouteHeader, KxSipSubscriptionStateHeader>();
        s_isEnabled = true;
    }
}

bool KxSipHeaderLibrary::sIsEnabled() {
    return s_isEnabled;
}
