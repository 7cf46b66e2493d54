#include "sipobject/headers/KxSipRouteHeader.h"

constinit const KxConstString KxSipRouteHeader::sToken{"Route"};

static const KxSipRouteHeader::Registration s_registration;

KxSipRouteHeader::KxSipRouteHeader(const KxHandle<KxSipNameAddress>& address)
    : KxSipParameterAddressHeader(address, {}) {
    const Oskan::EntryTraceScope trace(sLogger(), "KxSipRouteHeader ctor");
}

KxSipFault KxSipRouteHeader::parseValue(KxSipLine& line) {
    const KxSipFault fault = KxSipGrammar::sKeepsWholeAddresses() ? Base::parseStrictly(line) : parseNameAddress(line);
    return fault ? KxSipFault("Invalid Name-Address in KxSipRouteHeader") : fault;
}
