#include "sipheaders/KxSipPChargingVectorHeader.h"

constinit const KxConstString KxSipPChargingVectorHeader::sToken{"P-Charging-Vector"};

const HeaderID KxSipPChargingVectorHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);

void KxSipPChargingVectorHeader::setICIDGeneratedAt(KxSipText host) {
    const bool isIPv6 = host.view().starts_with('[') &&
                        host.view().find_first_not_of("[]:.0123456789abcdefABCDEF") == std::string_view::npos;
    isIPv6 ? setParameter("icid-generated-at", host.line()) : setText("icid-generated-at", host);
}

KxSipFault KxSipPChargingVectorHeader::parseValue(KxSipLine& line) {
    KxSharedParameters read;
    if (!read.write().parseExactly(line) || read.getValue("icid-value").empty()) {
        return KxSipFault("Invalid P-Charging-Vector header");
    }
    m_parameters.write() = read.write();
    return {};
}
