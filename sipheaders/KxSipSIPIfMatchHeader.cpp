#include "sipheaders/KxSipSIPIfMatchHeader.h"

constinit const KxConstString KxSipSIPIfMatchHeader::sToken{"SIP-If-Match"};

const HeaderID KxSipSIPIfMatchHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);
