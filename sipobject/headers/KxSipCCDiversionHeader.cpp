#include "sipobject/headers/KxSipCCDiversionHeader.h"

constinit const KxConstString KxSipCCDiversionHeader::sToken{"CC-Diversion"};

static const KxSipCCDiversionHeader::Registration s_registration;

KxSipCCDiversionHeader::KxSipCCDiversionHeader(const KxHandle<KxSipNameAddress>& address)
    : KxSipParameterAddressHeader(address, {}) {
    const Oskan::EntryTraceScope trace(sLogger(), "KxSipCCDiversionHeader ctor");
}
