#include "sipobject/messages/KxSipViaPart.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipHost.h"
#include "sipobject/messages/KxSipTokenText.h"

/** The host, which must be a token, or may be an IPv6 address. */
static KxString checkedHost(const KxSipAnyText& host) {
    const bool isIPv6 = KxSipGrammar::sChecksHosts() && KxSipHost::sGiven(host.view()).isIPv6();
    return isIPv6 ? host.line() : KxSipTokenText::sChecked(host, "Via host");
}

KxHandle<KxSipViaHeader> KxSipViaPart::make() const {
    if (isNone()) {
        return {};
    }
    auto via = KxMake<KxSipViaHeader>(checkedHost(host).c_str(), port,
                                      KxSipTokenText::sChecked(transport, "Via transport").c_str());
    if (branch.isNone()) {
        via->setBranchRFC3261();
    } else {
        via->setBranch(KxSipTokenText::sChecked(branch, "Via branch"));
    }
    if (rport) {
        via->setParameter("rport", KxString(""));
    }
    return via;
}
