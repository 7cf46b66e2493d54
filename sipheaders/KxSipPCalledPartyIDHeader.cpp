#include "sipheaders/KxSipPCalledPartyIDHeader.h"

constinit const KxConstString KxSipPCalledPartyIDHeader::sToken{"P-Called-Party-ID"};

const HeaderID KxSipPCalledPartyIDHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);
