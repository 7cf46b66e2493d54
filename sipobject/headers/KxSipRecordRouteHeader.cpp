#include "sipobject/headers/KxSipRecordRouteHeader.h"

#include <string>

constinit const KxConstString KxSipRecordRouteHeader::sToken{"Record-Route"};

static const KxSipRecordRouteHeader::Registration s_registration;

KxSipRecordRouteHeader::KxSipRecordRouteHeader(const KxHandle<KxSipNameAddress>& address)
    : KxSipAddressHeader(address) {
    const Oskan::TraceScope trace(sLogger(), "KxSipRecordRouteHeader ctor");
}

void KxSipRecordRouteHeader::parseValue(KxInputStream& in) {
    try {
        in >> m_nameAddress;
    } catch (const KxHandle<KxException>& failure) {
        KxSipParseError::sThrow(std::string("Exception when parsing Name-Address in KxSipRecordRouteHeader: ")
                                    .append(failure->getExceptionMessage().view()));
    }
    if (getSipURL().isNil()) {
        KxSipParseError::sThrow("Invalid SIP URL in Name-Address for Record-Route");
    }
}
