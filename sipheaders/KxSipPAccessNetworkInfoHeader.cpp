#include "sipheaders/KxSipPAccessNetworkInfoHeader.h"

constinit const KxConstString KxSipPAccessNetworkInfoHeader::sToken{"P-Access-Network-Info"};

const HeaderID KxSipPAccessNetworkInfoHeader::kHeaderID = KxSipHeader::sNewHeaderID();
