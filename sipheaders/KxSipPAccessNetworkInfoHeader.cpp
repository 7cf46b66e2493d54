#include "sipheaders/KxSipPAccessNetworkInfoHeader.h"

constinit const KxConstString KxSipPAccessNetworkInfoHeader::sToken{"P-Access-Network-Info"};

const HeaderID KxSipPAccessNetworkInfoHeader::kHeaderID = KxSipHeader::sNewHeaderID();

void KxSipPAccessNetworkInfoHeader::setNetworkProvided(bool isProvided) {
    removeParameter("np");
    isProvided ? setParameter("network-provided", KxString("")) : removeParameter("network-provided");
}
