#include "sipobject/headers/KxSipRouteHeader.h"

constinit const KxConstString KxSipRouteHeader::sToken{"Route"};

static const KxSipRouteHeader::Registration s_registration;

KxSipRouteHeader::KxSipRouteHeader(const KxHandle<KxSipNameAddress>& address) : KxSipAddressHeader(address) {
    const Oskan::TraceScope trace(sLogger(), "KxSipRouteHeader ctor");
}

void KxSipRouteHeader::parseValue(KxInputStream& in) {
    try {
        in >> m_nameAddress;
    } catch (const KxHandle<KxException>&) {
        KxSipParseError::sThrow("Invalid Name-Address in KxSipRouteHeader");
    }
}
