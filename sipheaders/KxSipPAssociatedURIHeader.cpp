#include "sipheaders/KxSipPAssociatedURIHeader.h"

constinit const KxConstString KxSipPAssociatedURIHeader::sToken{"P-Associated-URI"};

const HeaderID KxSipPAssociatedURIHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::EmptyList);
