#include "sipheaders/KxSipDiversionHeader.h"

constinit const KxConstString KxSipDiversionHeader::sToken{"Diversion"};

const HeaderID KxSipDiversionHeader::kHeaderID = KxSipHeader::sNewHeaderID();
