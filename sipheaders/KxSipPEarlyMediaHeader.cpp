#include "sipheaders/KxSipPEarlyMediaHeader.h"

constinit const KxConstString KxSipPEarlyMediaHeader::sToken{"P-Early-Media"};

const HeaderID KxSipPEarlyMediaHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::EmptyList);
