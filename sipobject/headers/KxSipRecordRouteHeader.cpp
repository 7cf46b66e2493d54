#include "sipobject/headers/KxSipRecordRouteHeader.h"

constinit const KxConstString KxSipRecordRouteHeader::sToken{"Record-Route"};

static const KxSipRecordRouteHeader::Registration s_registration;

KxSipRecordRouteHeader::KxSipRecordRouteHeader(const KxHandle<KxSipNameAddress>& address)
    : KxSipParameterAddressHeader(address, {}) {
    const Oskan::EntryTraceScope trace(sLogger(), "KxSipRecordRouteHeader ctor");
}

KxSipFault KxSipRecordRouteHeader::parseValue(KxSipLine& line) {
    const KxSipFault fault = KxSipGrammar::sKeepsWholeAddresses() ? Base::parseStrictly(line) : parseNameAddress(line);
    if (fault) {
        return fault.in(KxSipFault::Place::RecordRoute);
    }
    if (getSipURL().isNil()) {
        return KxSipFault("Invalid SIP URL in Name-Address for Record-Route");
    }
    return {};
}
