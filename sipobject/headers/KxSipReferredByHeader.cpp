#include "sipobject/headers/KxSipReferredByHeader.h"

constinit const KxConstString KxSipReferredByHeader::sToken{"Referred-By"};
constinit const KxConstString KxSipReferredByHeader::sRFCCompactToken{"b"};

static const KxSipReferredByHeader::Registration s_registration;

KxSipReferredByHeader::KxSipReferredByHeader(const KxHandle<KxSipNameAddress>& address,
                                             const KxHandle<KxParameters>& parameters)
    : KxSipParameterAddressHeader(address, parameters) {
    const Oskan::EntryTraceScope trace(sLogger(), "KxSipReferredByHeader ctor (1)");
}
