#include "sipheaders/KxSipHeaderLibrary.h"

#include "sipheaders/KxSipPAssertedIdentityHeader.h"
#include "sipheaders/KxSipReasonHeader.h"
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
        registerAll<KxSipPAssertedIdentityHeader, KxSipReasonHeader>();
        s_isEnabled = true;
    }
}

bool KxSipHeaderLibrary::sIsEnabled() {
    return s_isEnabled;
}
