#include "sipheaders/KxSipPAssertedIdentityHeader.h"

constinit const KxConstString KxSipPAssertedIdentityHeader::sToken{"P-Asserted-Identity"};

const HeaderID KxSipPAssertedIdentityHeader::kHeaderID = KxSipHeader::sNewHeaderID();
