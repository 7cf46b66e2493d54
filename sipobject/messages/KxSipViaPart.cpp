#include "sipobject/messages/KxSipViaPart.h"

#include "sipobject/messages/KxSipTokenText.h"

KxHandle<KxSipViaHeader> KxSipViaPart::make() const {
    if (isNone()) {
        return {};
    }
    auto via = KxMake<KxSipViaHeader>(KxSipTokenText::sChecked(host, "Via host").c_str(), port,
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
