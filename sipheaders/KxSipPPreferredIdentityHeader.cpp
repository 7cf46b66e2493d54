#include "sipheaders/KxSipPPreferredIdentityHeader.h"

constinit const KxConstString KxSipPPreferredIdentityHeader::sToken{"P-Preferred-Identity"};

const HeaderID KxSipPPreferredIdentityHeader::kHeaderID = KxSipHeader::sNewHeaderID();
