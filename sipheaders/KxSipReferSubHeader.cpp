#include "sipheaders/KxSipReferSubHeader.h"

constinit const KxConstString KxSipReferSubHeader::sToken{"Refer-Sub"};

const HeaderID KxSipReferSubHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);
